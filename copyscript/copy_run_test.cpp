#include "copyscript/copy_run.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "copyscript/copy_test_support.h"
#include "settings/ini_store.h"

namespace {

class copy_run_test : public copy_test {
 protected:
  // Parses one line ("@" expanded) and runs it.
  int run(std::string_view line) {
    unique_script script(copy_script_create(store_));
    EXPECT_EQ(copy_script_parse_line(script.get(), here(line).c_str()), 1) << line;
    return copy_line_run(script.get(), 0, &bytes_);
  }
  unsigned mode(std::string_view name) const { return status(name).st_mode & 07777; }
  unsigned bytes_ = 0;
};

TEST_F(copy_run_test, ControlSettingComparesIgnoringCase) {
  const char* settings[][2] = {
      {"on", "yes"}, {"off", "false"}, {"maybe", "maybe"}, {"db", "MySQL"}, {"want", "mysql"}};
  for (const auto& s : settings) ini_set(store_, s[0], s[1]);
  struct row {
    const char* control;
    int result;
  } rows[] = {{"on", 1},        {"off", -1},  {"maybe", -1}, {"db mysql", 1}, {"db want", 1},
              {"db pgsql", -1}, {"unset", 1}, {"- -", 1},    {"on -", -1},    {"off off", 1}};
  for (const auto& r : rows) {
    EXPECT_EQ(run(std::string("Exist @ result ") + r.control), r.result) << r.control;
  }
  EXPECT_EQ(times_logged("Debug: Doing nothing due to controlling setting"), 4);
}

TEST_F(copy_run_test, CopyFindsDestinationDirectoriesByPattern) {
  make("src/a.php", "aaaa");
  make("src/b.php", "bb");
  for (const char* d : {"src/sub.php/", "www/site1/", "www/site2/", "www/siteX/", "www/site.txt"})
    make(d);
  EXPECT_EQ(run("CopyFile @/src/*.php SITEX @/www/site*"), 4);
  EXPECT_EQ(read("www/site2/a.php"), "aaaa");
  EXPECT_FALSE(exists("www/siteX/a.php") || exists("www/site1/sub.php"));
  EXPECT_EQ(bytes_, 12u);

  EXPECT_EQ(run("CopyFile @/src/*.php - @/www/site1/"), 0);
  EXPECT_EQ(run("CopyFile @/src/*.php - @/nowhere/site1"), 0);
  EXPECT_EQ(times_logged("Error: No destination directories found\n"), 1);
  EXPECT_EQ(times_logged("Error: No destination directories found, No such file or directory"), 1);
  EXPECT_EQ(run("CopyFile @/src/*.none - @/www/site1"), 0);
  EXPECT_EQ(times_logged(here("Info: No files found to copy in '@/src/' matching '*.none'")), 1);
  std::string deep(300, 'd');
  EXPECT_EQ(run("CopyFile @/" + deep + "/*.php - @/" + deep), 0);
}

TEST_F(copy_run_test, FailedRenameMkDirAndIniFallBackToCopying) {
  make("src/a.txt", "A");
  make("dst/sub/keep");
  EXPECT_EQ(run("Rename @/src/a.txt @/dst/sub"), 1);
  EXPECT_EQ(
      times_logged(here("Error renaming '@/src/a.txt'->'@/dst/sub', Is a directory, Is a dir")), 1);
  EXPECT_EQ(read("dst/sub/a.txt"), "A");
  EXPECT_TRUE(exists("src/a.txt"));

  EXPECT_EQ(run("MkDir @/src/a.txt/inner"), 0);
  EXPECT_EQ(times_logged("Error: No destination directories found"), 1);

  make("dst/out.ini", "old");
  EXPECT_EQ(run("Ini @/missing.tmpl @/dst/out.ini"), 0);
  EXPECT_EQ(times_logged(here("Error: Error reading ini file '@/missing.tmpl', No such file")), 1);
  EXPECT_EQ(read("dst/out.ini"), "");
  EXPECT_EQ(run("Ini @/src/a.txt @/no/dir/out.ini"), 0);
  EXPECT_EQ(times_logged(here("Error: Error creating ini file '@/no/dir/out.ini'")), 1);
}

TEST_F(copy_run_test, RemoveMatchesBareNamesIgnoringCase) {
  for (const char* f : {"r/a.log", "r/b.log", "r/keep.log", "r/d/inner", "r/e.txt"}) make(f);
  EXPECT_EQ(run("RmFile @/r/* KEEP.log"), 3);
  EXPECT_TRUE(exists("r/d/inner"));
  EXPECT_EQ(run("RmDir @/r/* keep.log"), 2);
  EXPECT_TRUE(!exists("r/d") && exists("r/keep.log"));
  EXPECT_EQ(run("RmFile @/r/*.none -"), 0);
}

TEST_F(copy_run_test, ModesAndOwnersMatchExclusionsOnFullPaths) {
  for (const char* f : {"m/a", "m/d/b", "m/skip"}) make(f);
  EXPECT_EQ(run("Chmod @/m/* *skip 750"), 3);
  EXPECT_EQ(mode("m/d/b"), 0750u);
  EXPECT_NE(mode("m/skip"), 0750u);
  EXPECT_EQ(times_logged(here("Debug: Not chmod'ding '@/m/skip'")), 1);
  EXPECT_EQ(times_logged("Debug: Finished chmod'ing, 3 files done"), 1);
  // The source's directory alone lists everything; a bare name never matches a full path.
  EXPECT_EQ(run("Chmod @/m/ skip 700"), 4);
  EXPECT_EQ(run("Chmod @/m/a - 1a"), 1);  // 1*8 + ('a' - '0')
  EXPECT_EQ(mode("m/a"), 071u);

  if (geteuid() != 0) GTEST_SKIP() << "owner changes need root";
  ini_set(store_, "owner", "www-data:nogroup");
  EXPECT_EQ(run("Chown @/m/* *skip $(owner)"), 3);
  EXPECT_EQ(status("m/d/b").st_uid, 33u);
  EXPECT_EQ(status("m/d").st_gid, 65534u);
  EXPECT_EQ(status("m/skip").st_uid, 0u);
  EXPECT_EQ(times_logged("Found user id for 'www-data'=33"), 1);
  EXPECT_EQ(times_logged("Found group id for 'nogroup'=65534"), 1);
  EXPECT_EQ(run("Chown @/m/skip - nobody"), 1);  // no group "nobody": gid follows uid
  EXPECT_EQ(status("m/skip").st_gid, 65534u);
  EXPECT_EQ(times_logged("Found group id for 'nobody'=-1"), 1);
  EXPECT_EQ(run("Chown @/m/a - no_such_user"), 0);
  EXPECT_EQ(times_logged("Error: file_chown failed"), 1);
}

TEST_F(copy_run_test, SingleOperations) {
  ini_set(store_, "greeting", "hello world");
  ini_set(store_, "ok", "no");
  EXPECT_EQ(run("WFile @/w.txt greeting"), 1);
  EXPECT_EQ(run("WFile @/lit.txt literal"), 1);
  EXPECT_EQ(read("w.txt") + read("lit.txt"), "hello worldliteral");
  EXPECT_EQ(run("WFile @/no/w.txt greeting"), 0);
  EXPECT_EQ(times_logged(here("Error: Failed to write (@/no/w.txt), No such file")), 1);
  EXPECT_EQ(run("RFile @/w.txt greeting"), 1);  // opened for writing: emptied
  EXPECT_EQ(read("w.txt"), "");
  EXPECT_STREQ(ini_get(store_, "greeting"), "hello world");
  EXPECT_EQ(run("RFile @/no/r.txt greeting"), 0);
  EXPECT_EQ(times_logged(here("Error: Failed to read (@/no/r.txt)")), 1);
  // A full disk failing these lines is checked end to end in tests/faults.bats.

  EXPECT_EQ(run("Exist @/gone gone"), 1);
  EXPECT_STREQ(ini_get(store_, "gone"), "false");

  EXPECT_EQ(run("Error unset_setting first text"), 1);
  EXPECT_STREQ(copy_last_error(), "");
  EXPECT_EQ(run("Error ok Disk  full"), 0);
  EXPECT_EQ(run("Error flag other text"), 1);
  EXPECT_STREQ(copy_last_error(), "Disk  full");

  EXPECT_EQ(run("Bogus @/x"), 0);
  EXPECT_EQ(times_logged("Error: How did we get here!"), 1);
  EXPECT_EQ(copy_line_run(nullptr, 0, nullptr), 0);
}

TEST_F(copy_run_test, StopOnFailKeepsWhatWasDone) {
  unique_script script = load("[install]\nMkDir @/a\nCopyFile @/none/* - @/a\nMkDir @/b\n");
  int files = -5;
  unsigned bytes = 7;
  EXPECT_EQ(copy_script_run(script.get(), &files, &bytes, 1), 0);
  EXPECT_EQ(files, 1);
  EXPECT_EQ(bytes, 0u);
  EXPECT_TRUE(exists("a") && !exists("b"));
  EXPECT_EQ(times_logged("Info: Stop on fail set, stopping..."), 1);
  EXPECT_EQ(copy_script_run(script.get(), &files, nullptr, 0), 1);
  EXPECT_EQ(files, 2);
  EXPECT_TRUE(exists("a") && exists("b"));
  EXPECT_EQ(times_logged("Info: Stop on fail NOT set, continuing..."), 1);
  EXPECT_EQ(times_logged(here("Debug: Processing [260:@/a->,,,]")), 2);
  EXPECT_EQ(copy_script_run(nullptr, &files, nullptr, 0), 0);
}

int g_done = 0;
void count_done(const char*, const char*, int) { ++g_done; }

// One script with every operation word, against a scratch tree.
TEST_F(copy_run_test, EveryOperationWordInOneScript) {
  if (geteuid() != 0) GTEST_SKIP() << "owner changes need root";
  make("pkg/htdocs/index.php", "<?php 1");
  make("pkg/htdocs/lib/util.php", "util");
  make("pkg/htdocs/lib/old.bak", "x");
  make("pkg/htdocs/notes.bak/");
  make("pkg/cgi/run.cgi", "#!");
  make("pkg/app.tmpl", "  name = $(app)  \nroot=$(web_root)/$(unknown)\n");
  for (const char* f : {"web/cgi-bin/", "web/tmp/a.tmp", "web/tmp/b.tmp", "web/obsolete/junk"})
    make(f);
  ini_set(store_, "app", "shop");
  ini_set(store_, "version", "1.2");
  ini_set(store_, "use_cache", "off");
  ini_set(store_, "web_root", path("web").c_str());
  unique_script script = load(
      "[install]\nExist $(web_root) had_web\nMkDir @/web/app\n"
      "CopyDir @/pkg/htdocs/* *.bak @/web/app\nCopyFile @/pkg/cgi/*.cgi - @/web/cgi*\n"
      "Ini @/pkg/app.tmpl @/web/app/app.ini\nRename @/web/app/index.php @/web/app/main.php\n"
      "WFile @/web/app/version.txt version\nRFile @/web/app/state.txt version\n"
      "RmFile @/web/tmp/*.tmp -\nRmDir @/web/obsolete -\nChown @/web/app - www-data:nogroup\n"
      "Chmod @/web/app *.ini 750\nMkDir @/web/cache use_cache\nError had_web No web root\n");
  copy_script_set_callbacks(script.get(), count_done, nullptr);
  int files = 0;
  unsigned bytes = 0;
  EXPECT_EQ(copy_script_run(script.get(), &files, &bytes, 1), 1);
  file_set_callbacks(nullptr, nullptr);
  EXPECT_EQ(files, 1 + 1 + 3 + 1 + 1 + 1 + 1 + 1 + 2 + 2 + 7 + 6 + 1);
  EXPECT_EQ(bytes, 7u + 4u + 2u);
  EXPECT_GE(g_done, 5);
  EXPECT_EQ(read("web/app/main.php"), "<?php 1");
  EXPECT_EQ(read("web/app/app.ini"), "name = shop\nroot=" + path("web") + "/$(unknown)\n");
  EXPECT_EQ(read("web/app/version.txt"), "1.2");
  EXPECT_EQ(read("web/cgi-bin/run.cgi"), "#!");
  EXPECT_TRUE(exists("web/app/state.txt") && exists("web/tmp"));
  for (const char* gone :
       {"web/app/index.php", "web/app/lib/old.bak", "web/tmp/a.tmp", "web/obsolete", "web/cache"}) {
    EXPECT_FALSE(exists(gone)) << gone;
  }
  for (const char* f : {"web/app", "web/app/lib", "web/app/lib/util.php", "web/app/state.txt"}) {
    EXPECT_EQ(status(f).st_uid, 33u) << f;
    EXPECT_EQ(status(f).st_gid, 65534u) << f;
    EXPECT_EQ(mode(f), 0750u) << f;
  }
  EXPECT_NE(mode("web/app/app.ini"), 0750u);
  EXPECT_EQ(times_logged("Debug: Processing ["), 14);
  EXPECT_EQ(times_logged("Debug: Doing nothing due to controlling setting"), 1);
  EXPECT_EQ(times_logged(here("Info: Writing INI file '@/pkg/app.tmpl' to '@/web/app/app.ini'")),
            1);
  EXPECT_EQ(times_logged("Info: Copy script completed successfully"), 1);
  EXPECT_EQ(times_logged("Error:"), 0);
}

}  // namespace

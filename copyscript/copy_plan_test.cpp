#include "copyscript/copy_plan.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <sstream>

#include "copyscript/copy_test_support.h"

namespace {

// What stands at one name, as the plan lists it, and what else shows a write.
struct name_state {
  std::string listed;   // "file 0:0 0644"
  std::string written;  // size, modification time and content of a file
};

const char* kind_of(mode_t mode) {
  if (S_ISDIR(mode)) return "dir";
  if (S_ISLNK(mode)) return "link";
  return S_ISREG(mode) ? "file" : "special";
}

class copy_plan_test : public copy_test {
 protected:
  // The tree every case starts from, made afresh under "tree".
  void make_tree() {
    std::filesystem::remove_all(path("tree"));
    write_file("tree/src/one.txt", "1");
    ASSERT_EQ(chmod(write_file("tree/src/two.txt", "22").c_str(), 0640), 0);
    write_file("tree/src/sub/three.txt", "333");
    write_file("tree/src/sub\\three.txt", "a name, not a path");
    write_file("tree/t/");
    write_file("tree/t/keep.keep", "k");
    write_file("tree/old/stale.txt", "s");
    write_file("tree/board.ini.in", "title = $(flag)\n  port = 80  \n");
    ASSERT_EQ(symlink("/etc/hostname", path("tree/t/one.txt").c_str()), 0);
  }

  std::map<std::string, name_state> snapshot() const {
    std::map<std::string, name_state> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path("tree"))) {
      struct stat st {};
      if (lstat(entry.path().c_str(), &st) != 0) continue;
      char listed[64];
      snprintf(listed, sizeof listed, "%s %u:%u %04o", kind_of(st.st_mode), st.st_uid, st.st_gid,
               st.st_mode & 07777);
      std::string written;
      if (S_ISREG(st.st_mode)) {
        written = std::to_string(st.st_size) + " " + std::to_string(st.st_mtim.tv_nsec) + " " +
                  std::to_string(st.st_mtim.tv_sec) + " " + read_file(entry.path().string());
      }
      names[entry.path().string()] = {listed, written};
    }
    return names;
  }

  // The names that differ, in the plan's words ("new file 0:0 0644 <path>").
  static std::set<std::string> changed(const std::map<std::string, name_state>& before,
                                       const std::map<std::string, name_state>& after) {
    std::set<std::string> lines;
    for (const auto& [name, state] : after) {
      auto was = before.find(name);
      if (was == before.end()) {
        lines.insert("new " + state.listed + " " + name);
      } else if (was->second.listed != state.listed || was->second.written != state.written) {
        lines.insert("changed " + state.listed + " " + name);
      }
    }
    for (const auto& [name, state] : before) {
      if (after.count(name) == 0)
        lines.insert("removed " + state.listed.substr(0, state.listed.find(' ')) + " " + name);
    }
    return lines;
  }

  // The plan's list of names, from what it printed.
  std::set<std::string> planned() const {
    std::istringstream text(printed());
    std::set<std::string> lines;
    std::string line;
    bool in_list = false;
    while (std::getline(text, line)) {
      if (line.starts_with("Names it would change"))
        in_list = true;
      else if (line.empty())
        in_list = false;
      else if (in_list)
        lines.insert(line.substr(2));
    }
    return lines;
  }

  // Plans the script, checks the plan changed nothing, runs it, and checks
  // the run changed what the plan listed and ended as the plan said.
  void plan_then_run(const std::string& script_text, int stop_on_fail,
                     const std::function<void()>& prepare = {}) {
    SCOPED_TRACE(script_text);
    make_tree();
    if (prepare) prepare();
    unique_script planned_script(copy_script_create(store_));
    unique_script run_script(copy_script_create(store_));
    std::istringstream lines(here(script_text));
    for (std::string line; std::getline(lines, line);) {
      ASSERT_EQ(copy_script_parse_line(planned_script.get(), line.c_str()), 1) << line;
      ASSERT_EQ(copy_script_parse_line(run_script.get(), line.c_str()), 1) << line;
    }
    const auto before = snapshot();
    console("");
    copy_plan_result plan;
    const int plan_completed = copy_script_plan(planned_script.get(), stop_on_fail, &plan);
    ASSERT_EQ(snapshot().size(), before.size());
    EXPECT_TRUE(changed(before, snapshot()).empty());

    int files = 0;
    unsigned bytes = 0;
    copy_first_failure failure;
    const int completed = copy_script_run(run_script.get(), &files, &bytes, stop_on_fail, &failure);
    EXPECT_EQ(planned(), changed(before, snapshot())) << printed();
    EXPECT_EQ(plan_completed, completed);
    EXPECT_EQ(plan.files, files);
    EXPECT_EQ(plan.bytes, bytes);
    EXPECT_EQ(plan.failure.index, failure.index);
  }
};

// Each row a script whose lines depend on what earlier lines would do, or
// that meets what the run refuses or falls back from.
TEST_F(copy_plan_test, PlanListsWhatTheRunThenChanges) {
  const char* scripts[] = {
      // A directory an earlier line makes, with its parents, is there later.
      "MkDir @/tree/a/b\nCopyFile @/tree/src/* - @/tree/a/b\nChmod @/tree/a/b/*.txt - 600",
      // A removed directory made again holds nothing of what it held.
      "RmDir @/tree/old -\nMkDir @/tree/old\nCopyFile @/tree/src/one.txt - @/tree/old",
      // Whole trees, a directory renamed, then re-moded below it.
      "CopyDir @/tree/src - @/tree/t\nRename @/tree/t/src @/tree/t/moved\n"
      "Chmod @/tree/t/moved - 700",
      // A copy into itself skips the copy it makes.
      "CopyDir @/tree/src - @/tree/src",
      // A link at the destination's name is never written through.
      "CopyFile @/tree/src/* - @/tree/t",
      // Exclusions, a file removed, a file written over and emptied.
      "RmFile @/tree/t/* *.KEEP\nWFile @/tree/src/one.txt flag\nRFile @/tree/src/two.txt x",
      // A template rendered; one that is missing empties its destination
      // and falls back to a copy that finds no directory.
      "Ini @/tree/board.ini.in @/tree/t/board.ini\nIni @/tree/none.in @/tree/t/other.ini",
      // A rename of nothing falls back to a copy of what the source's
      // pattern matches; a made directory over a file fails.
      "Rename @/tree/src/*.txt @/tree/old\nMkDir @/tree/src/one.txt/x",
      // Exist sees what an earlier line copied, and its control lets a line run.
      "CopyFile @/tree/src/two.txt - @/tree/old\nExist @/tree/old/two.txt have\n"
      "WFile @/tree/old/flag.txt flag have",
      // Exclusions ignore case at the top of a tree copy, not below it.
      "CopyDir @/tree/src *.TXT,sub,SRC2 @/tree/old",
      // Mode changes by path exclusion, everything below a directory first.
      "Chmod @/tree/src - 750 *sub*",
  };
  for (const char* script : scripts) plan_then_run(script, 0);
  // Stopping at the first failing line: nothing after it is planned.
  plan_then_run("CopyFile @/tree/none/* - @/tree/t\nMkDir @/tree/after", 1);
  EXPECT_NE(printed().find("The run stops here"), std::string::npos);
}

// Owners: a new file in a set-group-id directory takes its group, a chown
// names the ids it would give, and one to root leaves the web server's link.
TEST_F(copy_plan_test, OwnersFollowTheAccountsAndTheSetGroupIdBit) {
  const passwd* web = getpwnam("www-data");
  if (web == nullptr || geteuid() != 0) GTEST_SKIP() << "needs root and www-data";
  plan_then_run(
      "CopyFile @/tree/src/one.txt - @/tree/t\nMkDir @/tree/t/sub\n"
      "Chown @/tree/t - www-data:www-data\nChown @/tree/old - root:root",
      0, [&] {
        ASSERT_EQ(chown(path("tree/t").c_str(), 0, web->pw_gid), 0);
        ASSERT_EQ(chmod(path("tree/t").c_str(), 02775), 0);
        // The web server's link is left to it by a chown to root.
        ASSERT_EQ(symlink("/etc/hostname", path("tree/old/web.lnk").c_str()), 0);
        ASSERT_EQ(lchown(path("tree/old/web.lnk").c_str(), web->pw_uid, web->pw_gid), 0);
        ASSERT_EQ(chown(path("tree/old/stale.txt").c_str(), web->pw_uid, web->pw_gid), 0);
      });
  EXPECT_NE(printed().find("leave link " + path("tree/old/web.lnk") + " to its owner"),
            std::string::npos);
}

}  // namespace

#include "questions/question_walk.h"

#include "foundation/str_text.h"
#include "questions/test_support.h"

namespace {

class QuestionWalk : public question_test {
 protected:
  void TearDown() override {
    question_set_unattended(0);
    question_test::TearDown();
  }

  walk_outcome walk(const std::string& lines, const std::string& input, int expand = 0) {
    load_set(lines);
    console(input);
    return question_walk(set_, store_, expand);
  }

  std::string value(const char* name) { return str_or_empty(ini_get(store_, name)); }
};

const char* const kInstallQuestions =
    "Text name - - 1 Your name?\n"
    "YN use_db - - 2 Use a database?\n"
    "Text db_name use_db - 3 Database name?\n"
    "Dir app_dir - - 4 Install into?\n"
    "DirExist web_root - - 5 Web root?\n"
    "DirEmpty data_dir - - 6 Data directory?\n"
    "File conf - - 7 Config file?\n"
    "FileExist license - - 8 License file?\n"
    "FileName package - - 9 Package?\n"
    "Copy backup - - 10 app_dir\n"
    "Exist $(web_root)/index.html has_index\n"
    "Error has_index 11 No index in $(web_root)\n"
    "YN happy - - 12 All fine?\n"
    "Loop happy 12\n";

TEST_F(QuestionWalk, ScriptedInstallDialogue) {
  const std::string www = path("www");
  std::filesystem::create_directory(www);
  write_file("www/index.html", "");
  write_file("LICENSE", "");
  const ini_setting_def defs[] = {
      {"name", "guest", 0},        {"use_db", "false", 0},       {"db_name", "none", 0},
      {"app_dir", "/opt/app/", 0}, {"web_root", www.c_str(), 0}, {"data_dir", nullptr, 0},
      {"conf", nullptr, 0},        {"license", nullptr, 0},      {"package", nullptr, 0},
      {"backup", nullptr, 0},      {"has_index", nullptr, 0},    {"happy", "true", 0},
      {nullptr, nullptr, 0}};
  make_store(defs);
  const std::string data = path("data"), license = path("LICENSE");
  const std::string input = "Ann\nb\n\n\n\n/nonexistent\n\n\n" + www + "\n" + data +
                            "/\n/etc/app.conf\n" + license + "\n/tmp/app-1.2.tar.gz\nn\ny\nyes\n" +
                            "\ny\nappdb\n/srv/app/\n\n\n\n\n\n\n\n";
  EXPECT_EQ(walk(kInstallQuestions, input), walk_outcome::success);
  const std::string retry = ", please try again\n";
  EXPECT_EQ(printed(),
            "Your name? [guest]? Use a database? [n]? Your name? [Ann]? Use a database? [n]? "
            "Install into? [/opt/app/]? Web root? [" +
                www +
                "]? "
                "Error: Directory '/nonexistent' must exist, No such file or directory" +
                retry + "Web root? [" + www +
                "]? Data directory? []? Error: You must enter an answer" + retry +
                "Data directory? []? Error: Directory '" + www + "' must be empty" + retry +
                "Data directory? []? Config file? []? License file? []? Package? []? "
                "All fine? [y]? All fine? [n]? Do you want to change your answers [n]? "
                "Your name? [Ann]? Use a database? [n]? Database name? [none]? "
                "Install into? [/opt/app]? Web root? [" +
                www + "]? Data directory? [" + data +
                "]? "
                "Config file? [/etc/app.conf]? License file? [" +
                license +
                "]? "
                "Package? [app-1.2.tar]? All fine? [y]? Do you want to change your answers [n]? ");
  const std::pair<const char*, std::string> expected[] = {
      {"name", "Ann"},           {"use_db", "true"},    {"db_name", "appdb"},
      {"app_dir", "/srv/app"},   {"web_root", www},     {"data_dir", data},
      {"conf", "/etc/app.conf"}, {"license", license},  {"package", "app-1.2"},
      {"backup", "/srv/app"},    {"has_index", "true"}, {"happy", "true"}};
  for (const auto& [name, text] : expected) EXPECT_EQ(value(name), text) << name;
}

TEST_F(QuestionWalk, ConditionsCompareExactly) {
  const ini_setting_def defs[] = {
      {"use_db", nullptr, 0}, {"kind", "pg", 0}, {"x", "old", 0}, {nullptr, nullptr, 0}};
  make_store(defs);
  const struct {
    const char* use_db;  // null: no value
    const char* compare;
    bool asked;
  } rows[] = {{"true", "-", true},      {"false", "-", false},    {"maybe", "-", false},
              {nullptr, "mysql", true}, {"mysql", "mysql", true}, {"MySQL", "mysql", false},
              {"pg", "kind", true},     {"kind", "kind", false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(str_or_empty(row.use_db)) + " " + row.compare);
    free(ini_take_first_by_name(store_, "use_db"));
    if (row.use_db != nullptr) ini_set(store_, "use_db", row.use_db);
    ini_set(store_, "x", "old");
    EXPECT_EQ(walk(std::string("Text x use_db ") + row.compare + " 1 X?\n", "quit\ny\nQ\n"),
              row.asked ? walk_outcome::quit : walk_outcome::success);
    EXPECT_EQ(value("x"), row.asked ? "quit" : "old");
  }
}

TEST_F(QuestionWalk, UnattendedTakesDefaults) {
  const ini_setting_def defs[] = {
      {"a", "x/", 0}, {"b", nullptr, INI_EMPTY_OK}, {"y", "on", 0}, {nullptr, nullptr, 0}};
  make_store(defs);
  question_set_unattended(1);
  EXPECT_EQ(walk("Dir a - - 1 A?\nText b - - 1 B?\nYN y - - 1 Y?\n", ""), walk_outcome::success);
  EXPECT_EQ(printed(), "");
  EXPECT_EQ(value("a"), "x");
  EXPECT_EQ(value("b"), "");  // no default: empty, not the previous answer
  EXPECT_EQ(value("y"), "true");
}

TEST_F(QuestionWalk, EndsWithTheRightOutcomeAndMessage) {
  const ini_setting_def defs[] = {{"flag", "false", 0},       {"next", "false", 0},
                                  {"later", "true", 0},       {"root", "/srv", 0},
                                  {"m", "/nonexistent/m", 0}, {"q", "q", 0},
                                  {"back", "B", 0},           {nullptr, nullptr, 0}};
  make_store(defs);
  const char* const error_first = "Error flag 1 Cannot find $(root)\nText root - - 1 Root?\n";
  const struct {
    int unattended, expand;
    const char* lines;
    const char* input;
    walk_outcome outcome;
    const char* shown;
  } rows[] = {
      {0, 0, error_first, "", walk_outcome::failure, "Error: Cannot find $(root)\n"},
      {0, 1, error_first, "", walk_outcome::failure, "Error: Cannot find /srv\n"},
      {0, 0, "Error later 1 No\nText root - - 1 Root?\n", "b\nq\n", walk_outcome::quit,
       "Root? [/srv]? Root? [/srv]? "},  // back onto the Error, which passes again
      {0, 0, "Text root - - 1 Root?\n", "B\n", walk_outcome::quit, "Root? [/srv]? Root? [/srv]? "},
      {1, 0, "Copy flag - - 0 next\nCopy next - - 0 later\nLoop flag 0\n", "",
       walk_outcome::success, ""},
      {1, 0, "Copy flag - - 0 next\nLoop flag 0\n", "", walk_outcome::failure,
       "Error: Loop to 0 would repeat forever in unattended mode\n"},
      {0, 0, "Loop flag 0\n", "", walk_outcome::failure, "Error: Loop to 0 would repeat forever\n"},
      {0, 0, "Loop flag x\n", "", walk_outcome::failure,
       "Error: Loop index 'x' is not a question number\n"},
      {0, 0, "Loop flag 1\n", "", walk_outcome::failure,
       "Error: Loop index '1' is not a question number\n"},
      {0, 0, "Text later - - 0 L?\nLoop flag 0\n", "\n", walk_outcome::quit,
       "L? [true]? L? [true]? "},
      {1, 0, "FileExist m - - 1 M?\n", "", walk_outcome::failure,
       "Error: File '/nonexistent/m' must exist, No such file or directory, please try again\n"},
      {1, 0, "Text q - - 1 Q?\n", "", walk_outcome::failure,
       "Error: Default answer 'q' for 'q' would quit the action in unattended mode\n"},
      {1, 0, "Text back - - 1 B?\n", "", walk_outcome::failure,
       "Error: Default answer 'B' for 'back' would step back forever in unattended mode\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.lines);
    question_set_unattended(row.unattended);
    ini_set(store_, "flag", "false");
    ini_set(store_, "next", "false");
    EXPECT_EQ(walk(row.lines, row.input, row.expand), row.outcome);
    EXPECT_EQ(printed(), row.shown);
  }
  EXPECT_EQ(question_walk(nullptr, store_, 0), walk_outcome::failure);
}

}  // namespace

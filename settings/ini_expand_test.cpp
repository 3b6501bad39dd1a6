#include "settings/ini_expand.h"

#include <string>

#include "foundation/test_scratch.h"

namespace {

constexpr unsigned kRepl = INI_REPLACEABLE;
constexpr ini_setting_def kDefs[] = {{"host", "box", kRepl},
                                     {"dir", "/srv/$(host)", 0},
                                     {"blank", nullptr, 0},
                                     {"pw", "secret", INI_MASKED},
                                     {"a", "$(HOST)/$(dir)/$(nowhere)", kRepl},
                                     {"chain", "$(later)!", INI_FIXED},
                                     {"later", "$(host)+$(blank)", kRepl},
                                     {"host", "shadow", kRepl},
                                     {"swing", "$(tick)", kRepl},
                                     {"tick", "$(tock)", kRepl},
                                     {"tock", "$(tick)", kRepl},
                                     {"open", "at $(pw", kRepl},
                                     {"self", "x$(self)", kRepl},
                                     {nullptr, nullptr, 0}};

class Expand : public scratch_test {
 protected:
  void SetUp() override {
    scratch_test::SetUp();
    ini_setup(store_, kDefs, nullptr, 1);
  }
  void TearDown() override {
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  std::string expand(const char* text, ini_unknown_refs policy, unsigned size = 1000) {
    std::string out(size, '#');
    ini_expand_refs(store_, text, out.data(), size, policy);
    return out.c_str();
  }
  ini_store* store_ = ini_create();
};

TEST_F(Expand, ReferencesUnderEitherPolicy) {
  // Each row: the text, expanded dropping and keeping unknown references.
  const char* rows[][3] = {{"plain text", "plain text", "plain text"},
                           {"$(host)-$(host)", "box-box", "box-box"},
                           {"at $(Host)!", "at !", "at $(Host)!"},
                           {"[$(blank)]", "[]", "[$(blank)]"},
                           {"pw=$(pw)", "pw=secret", "pw=secret"},
                           {"$(dir)", "/srv/$(host)", "/srv/$(host)"},
                           {"a $(host", "a ", "a $(host"},
                           {"$()$(", "", "$()$("}};
  for (const auto& row : rows) {
    EXPECT_EQ(expand(row[0], ini_unknown_refs::drop), row[1]) << row[0];
    EXPECT_EQ(expand(row[0], ini_unknown_refs::keep), row[2]) << row[0];
  }
  EXPECT_EQ(expand("ab$(host)cd", ini_unknown_refs::drop, 5), "abbo");
  EXPECT_EQ(expand("$(nope)abcdef", ini_unknown_refs::keep, 5), "$(no");
  EXPECT_EQ(expand("abcdef", ini_unknown_refs::keep, 5), "abcd");
}

// Names match ignoring case and take a replaceable setting's first value or
// nothing; values that never settle are left as they were, while values that
// double until the cut at 999 drops the reference end as they always did.
TEST_F(Expand, TheReplaceablePass) {
  EXPECT_EQ(ini_process_replaceable(store_), 1);
  const std::string rows[][2] = {{"a", "box//$(nowhere)"}, {"chain", "box+!"},
                                 {"swing", "$(tick)"},     {"tock", "$(tick)"},
                                 {"open", "at $(pw"},      {"self", std::string(999, 'x')}};
  for (const auto& row : rows) EXPECT_EQ(ini_get(store_, row[0].c_str()), row[1]) << row[0];
  EXPECT_EQ(logged("References in setting 'open' never resolve"), 1);
  EXPECT_EQ(logged("References in setting 'self'"), 0);
}

}  // namespace

#include "settings/ini_expand.h"

#include <string>

#include "foundation/test_scratch.h"

namespace {

class expand_test : public scratch_test {
 protected:
  void set_up(const ini_setting_def* defs) { ini_setup(store_, defs, nullptr, 1); }
  std::string expand(const char* text, ini_unknown_refs policy = ini_unknown_refs::drop,
                     unsigned size = 1000) {
    std::string out(size, '#');
    ini_expand_refs(store_, text, out.data(), size, policy);
    return out.c_str();
  }
  std::string value_of(const char* name) {
    const char* value = ini_get(store_, name);
    return value != nullptr ? value : "(none)";
  }
  void TearDown() override {
    ini_destroy(&store_);
    scratch_test::TearDown();
  }
  ini_store* store_ = ini_create();
};

const ini_setting_def kExpandDefs[] = {{"host", "box", INI_FIXED | INI_REPLACEABLE},
                                       {"dir", "/srv/$(host)", 0},
                                       {"blank", nullptr, 0},
                                       {"pw", "secret", INI_MASKED},
                                       {nullptr, nullptr, 0}};

TEST_F(expand_test, ExpandsReferencesUnderEitherPolicy) {
  set_up(kExpandDefs);
  struct row {
    const char* text;
    const char* dropped;
    const char* kept;
  };
  const row rows[] = {
      {"plain text", "plain text", "plain text"},
      {"$(host)-$(host)", "box-box", "box-box"},
      {"at $(Host)!", "at !", "at $(Host)!"},
      {"$(unknown)/x", "/x", "$(unknown)/x"},
      {"[$(blank)]", "[]", "[$(blank)]"},
      {"pw=$(pw)", "pw=secret", "pw=secret"},
      {"$(dir)", "/srv/$(host)", "/srv/$(host)"},  // inserted values stay as they are
      {"a $(host", "a ", "a $(host"},
      {"$()$(", "", "$()$("},
  };
  for (const row& r : rows) {
    EXPECT_EQ(expand(r.text), r.dropped) << r.text;
    EXPECT_EQ(expand(r.text, ini_unknown_refs::keep), r.kept) << r.text;
  }
  // Output is cut to the buffer; null arguments leave it untouched.
  EXPECT_EQ(expand("ab$(host)cd", ini_unknown_refs::drop, 5), "abbo");
  EXPECT_EQ(expand("$(nope)abcdef", ini_unknown_refs::keep, 5), "$(no");
  EXPECT_EQ(expand("x", ini_unknown_refs::drop, 1), "");
  char out[4] = "old";
  ini_expand(nullptr, "x", out, sizeof out);
  ini_expand(store_, nullptr, out, sizeof out);
  ini_expand(store_, "x", out, 0);
  EXPECT_STREQ(out, "old");
}

TEST_F(expand_test, ReplaceablePassResolvesNamesIgnoringCase) {
  const ini_setting_def defs[] = {{"host", "box", INI_FIXED | INI_REPLACEABLE},
                                  {"action", "install", 0},
                                  {"a", "$(HOST)/$(action)/$(nowhere)", INI_REPLACEABLE},
                                  {"twice", "$(host)-$(host)", INI_REPLACEABLE},
                                  {"chain", "$(later)!", INI_FIXED},
                                  {"later", "$(host)+$(empty)", INI_REPLACEABLE},
                                  {"empty", nullptr, INI_REPLACEABLE},
                                  {"host", "shadow", INI_REPLACEABLE},
                                  {nullptr, nullptr, 0}};
  set_up(defs);
  EXPECT_EQ(ini_process_replaceable(store_), 1);
  const char* expected[][2] = {
      {"a", "box//$(nowhere)"}, {"twice", "box-box"}, {"chain", "box+!"}, {"later", "box+"}};
  for (const auto& row : expected) EXPECT_EQ(value_of(row[0]), row[1]) << row[0];
  EXPECT_TRUE(
      logged("Replaced '$(action)' in 'box/$(action)/$(nowhere)' with '(NULL)' = "
             "'box//$(nowhere)'"));
  EXPECT_TRUE(logged("Finished processing replacable settings"));
  EXPECT_EQ(ini_process_replaceable(nullptr), 0);
}

TEST_F(expand_test, ReplaceablePassEndsOnValuesThatNeverSettle) {
  const ini_setting_def defs[] = {
      {"same", "$(same)", INI_REPLACEABLE},   {"swing", "$(tick)", INI_REPLACEABLE},
      {"tick", "$(tock)", INI_REPLACEABLE},   {"tock", "$(tick)", INI_REPLACEABLE},
      {"open", "at $(fine", INI_REPLACEABLE}, {"fine", "ok", INI_REPLACEABLE},
      {"self", "x$(self)", INI_REPLACEABLE},  {"ping", "[$(pong)]", INI_REPLACEABLE},
      {"pong", "$(ping)", INI_REPLACEABLE},   {nullptr, nullptr, 0}};
  set_up(defs);
  EXPECT_EQ(ini_process_replaceable(store_), 1);
  for (const char* name : {"same", "swing", "tick", "tock", "open"}) {
    EXPECT_EQ(value_of(name), defs[ini_index_of(store_, name)].value) << name;
  }
  EXPECT_TRUE(logged("References in setting 'same' never resolve, value left as '$(same)'"));
  EXPECT_TRUE(logged("References in setting 'open' never resolve"));
  // Values that double until the cut at 999 drops the reference end as they
  // always did, without an error.
  EXPECT_EQ(value_of("self"), std::string(999, 'x'));
  EXPECT_EQ(value_of("ping"), std::string(999, '['));
  EXPECT_FALSE(logged("References in setting 'self'"));
}

}  // namespace

#include "settings/ini_expand.h"

#include <chrono>
#include <string>

#include "settings/settings_test_support.h"

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
      {"$ (host) $host", "$ (host) $host", "$ (host) $host"},
  };
  for (const row& r : rows) {
    EXPECT_EQ(expand(r.text), r.dropped) << r.text;
    EXPECT_EQ(expand(r.text, ini_unknown_refs::keep), r.kept) << r.text;
  }
  char out[100];
  ini_expand(store_, "$(host)/a", out, sizeof out);
  EXPECT_STREQ(out, "box/a");
}

TEST_F(expand_test, OutputIsCutToTheBuffer) {
  set_up(kExpandDefs);
  EXPECT_EQ(expand("abcdefgh", ini_unknown_refs::drop, 5), "abcd");
  EXPECT_EQ(expand("ab$(host)cd", ini_unknown_refs::drop, 5), "abbo");
  EXPECT_EQ(expand("abcdef$(host)", ini_unknown_refs::drop, 5), "abcd");
  EXPECT_EQ(expand("$(nope)abcdef", ini_unknown_refs::keep, 5), "$(no");
  EXPECT_EQ(expand("x", ini_unknown_refs::drop, 1), "");

  char out[4] = "old";
  ini_expand(nullptr, "x", out, sizeof out);
  ini_expand(store_, nullptr, out, sizeof out);
  ini_expand(store_, "x", out, 0);
  EXPECT_STREQ(out, "old");
  ini_expand(store_, "x", nullptr, 10);
}

TEST_F(expand_test, ReplaceablePassResolvesNamesIgnoringCase) {
  const ini_setting_def defs[] = {
      {"host", "box", INI_FIXED | INI_REPLACEABLE},
      {"action", "install", 0},
      {"a", "$(HOST)/$(action)/$(nowhere)", INI_REPLACEABLE},
      {"twice", "$(host)-$(host)", INI_REPLACEABLE},
      {"chain", "$(later)!", INI_REPLACEABLE},
      {"fixed", "$(host)", INI_FIXED},
      {"later", "$(host)+$(empty)", INI_REPLACEABLE},
      {"empty", nullptr, INI_REPLACEABLE},
      {"host", "shadow", INI_REPLACEABLE},
      {nullptr, nullptr, 0}};
  set_up(defs);
  ini_set(store_, "multi", "first");
  ini_set(store_, "multi", "$(a)");
  EXPECT_EQ(ini_process_replaceable(store_), 1);
  EXPECT_EQ(value_of("a"), "box//$(nowhere)");
  EXPECT_EQ(value_of("twice"), "box-box");
  EXPECT_EQ(value_of("chain"), "box+!");
  EXPECT_EQ(value_of("fixed"), "box");
  EXPECT_EQ(value_of("later"), "box+");
  ini_get(store_, "multi");
  EXPECT_STREQ(ini_get_next(store_, "multi"), "box//$(nowhere)");
  EXPECT_TRUE(logged("Processing replacable settings..."));
  EXPECT_TRUE(logged("Replaced '$(HOST)' in '$(HOST)/$(action)/$(nowhere)' with 'box' = "
                     "'box/$(action)/$(nowhere)'"));
  EXPECT_TRUE(logged("Replaced '$(action)' in 'box/$(action)/$(nowhere)' with '(NULL)' = "
                     "'box//$(nowhere)'"));
  EXPECT_TRUE(logged("Finished processing replacable settings"));
  EXPECT_FALSE(logged("never resolve"));
  EXPECT_EQ(ini_process_replaceable(nullptr), 0);
  ini_store* unset = ini_create();
  EXPECT_EQ(ini_process_replaceable(unset), 0);
  ini_destroy(&unset);
}

TEST_F(expand_test, ReplaceablePassEndsOnValuesThatNeverSettle) {
  const ini_setting_def defs[] = {{"same", "$(same)", INI_REPLACEABLE},
                                  {"ping", "[$(pong)]", INI_REPLACEABLE},
                                  {"pong", "$(ping)", INI_REPLACEABLE},
                                  {"swing", "$(tick)", INI_REPLACEABLE},
                                  {"tick", "$(tock)", INI_REPLACEABLE},
                                  {"tock", "$(tick)", INI_REPLACEABLE},
                                  {"open", "at $(fine", INI_REPLACEABLE},
                                  {"fine", "$(other)", INI_REPLACEABLE},
                                  {"other", "ok", INI_REPLACEABLE},
                                  {nullptr, nullptr, 0}};
  set_up(defs);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ini_process_replaceable(store_), 1);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  const char* unchanged[] = {"same", "swing", "tick", "tock", "open"};
  for (const char* name : unchanged) {
    EXPECT_EQ(value_of(name), defs[ini_index_of(store_, name)].value) << name;
    EXPECT_TRUE(logged("References in setting '" + std::string(name) + "' never resolve"))
        << name;
  }
  EXPECT_TRUE(logged("References in setting 'same' never resolve, value left as '$(same)'"));
  EXPECT_EQ(value_of("fine"), "ok");
  EXPECT_FALSE(logged("References in setting 'fine'"));
  // "[$(pong)]" grows by brackets until the cut at 999 removes the reference.
  EXPECT_EQ(value_of("ping").size(), 999u);
  EXPECT_EQ(value_of("ping").find("$("), std::string::npos);
}

TEST_F(expand_test, GrowthCutAtALineEndsAPassThatWouldEnd) {
  const ini_setting_def defs[] = {{"self", "x$(self)", INI_REPLACEABLE}, {nullptr, nullptr, 0}};
  set_up(defs);
  EXPECT_EQ(ini_process_replaceable(store_), 1);
  EXPECT_EQ(value_of("self"), std::string(999, 'x'));
  EXPECT_FALSE(logged("never resolve"));
}

}  // namespace

#include "settings/ini_expand.h"

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
                                     {"tick", "$(tock)", kRepl},
                                     {"tock", "$(tick)", kRepl},
                                     {"open", "at $(pw", kRepl},
                                     {"self", "x$(self)", kRepl},
                                     {nullptr, nullptr, 0}};

// text expanded into size bytes dropping unknown references, then "|", then
// keeping them.
std::string expand(ini_store* store, const char* text, unsigned size = 1000) {
  std::string dropped(size, '#'), kept(size, '#');
  ini_expand_refs(store, text, dropped.data(), size, ini_unknown_refs::drop);
  ini_expand_refs(store, text, kept.data(), size, ini_unknown_refs::keep);
  return dropped.c_str() + std::string("|") + kept.c_str();
}

using Expand = scratch_test;

TEST_F(Expand, ReferencesUnderEitherPolicyAndTheReplaceablePass) {
  ini_store* store = ini_create();
  ini_setup(store, kDefs, nullptr, 1);
  const char* rows[][2] = {{"plain text", "plain text|plain text"},
                           {"$(host)-$(host)", "box-box|box-box"},
                           {"at $(Host)!", "at !|at $(Host)!"},
                           {"[$(blank)]", "[]|[$(blank)]"},
                           {"pw=$(pw)", "pw=secret|pw=secret"},
                           {"$(dir)", "/srv/$(host)|/srv/$(host)"},  // inserted values stay
                           {"a $(host", "a |a $(host"},
                           {"$()$(", "|$()$("}};
  for (const auto& row : rows) EXPECT_EQ(expand(store, row[0]), row[1]) << row[0];
  EXPECT_EQ(expand(store, "ab$(host)cd", 5), "abbo|abbo");
  EXPECT_EQ(expand(store, "$(nope)abcdef", 5), "abcd|$(no");
  // The pass: names match ignoring case and take a replaceable setting's
  // first value or nothing; values that never settle are left as they were,
  // while values that double until the cut at 999 drops the reference end as
  // they always did.
  EXPECT_EQ(ini_process_replaceable(store), 1);
  const std::string values[][2] = {{"a", "box//$(nowhere)"},
                                   {"chain", "box+!"},
                                   {"tick", "$(tock)"},
                                   {"open", "at $(pw"},
                                   {"self", std::string(999, 'x')}};
  for (const auto& row : values) EXPECT_EQ(ini_get(store, row[0].c_str()), row[1]) << row[0];
  EXPECT_EQ(logged("References in setting 'open' never resolve"), 1);
  ini_destroy(&store);
}

}  // namespace

#include "driver/known_settings.h"

#include <string>

#include "foundation/test_scratch.h"

namespace {

using KnownSettingsTest = scratch_test;

TEST_F(KnownSettingsTest, NamesEveryDataFileDeclaresOrSets) {
  ini_store* store = ini_create();
  const ini_setting_def defs[] = {{"declared", "x", 0}, {nullptr, nullptr, 0}};
  ini_setup(store, defs, nullptr, 1);
  write_file("p.int",
             "Exist /x found - -\nCopy copied declared - -\nHTTP_Root root no_root - -\n"
             "TimeDate fmt stamp - -\nRFile /f read - -\nWFile /w written - -\n");
  write_file("p.q",
             "[install]\nText asked - - 1 Q\nExist $(asked)/x there\nError errflag 2 E\n"
             "[special]\nLoop loopflag 0\nyn other - - 3 Q\n");
  write_file("p.cpy", "[install]\nExist /x cpy_exist\nRFile /y cpy_read\nWFile /z cpy_written\n");
  init_list* commands = init_list_create();
  ASSERT_EQ(init_load(commands, path("p.int").c_str()), 1);
  std::string names;
  for (const std::string& name :
       known_settings(store, commands, path("p.q").c_str(), path("p.cpy").c_str())) {
    names += name + " ";
  }
  EXPECT_EQ(names,
            "asked copied cpy_exist cpy_read declared found no_root other read root stamp there ");
  init_list_free(&commands);
  ini_destroy(&store);
}

}  // namespace

// Test support for the file operations: the step callbacks pointed at a
// record of what the console would show, 0 for each step done (a dot) and
// the errno of each step failed (its reason).
#pragma once

#include <cerrno>
#include <vector>

#include "fileops/file_base.h"

inline std::vector<int>& file_steps() {
  static std::vector<int> steps;
  return steps;
}
inline void record_file_steps() {
  file_steps().clear();
  file_set_callbacks([](const char*, const char*, int) { file_steps().push_back(0); },
                     [](const char*, const char*, int) { file_steps().push_back(errno); });
}

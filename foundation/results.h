// Result codes shared by every module. Callers test for non-zero, so
// k_skipped (-1, refused or skipped) stays truthy and counts as success.
#pragma once

inline constexpr int k_ok = 1;
inline constexpr int k_fail = 0;
inline constexpr int k_skipped = -1;

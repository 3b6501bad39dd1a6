#include "fuzz/fuzz_support.h"

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "foundation/logger.h"

namespace {

std::string g_dir;
logger* g_log = nullptr;

void remove_scratch() {
  if (g_log != nullptr) {
    log_set_current(nullptr);
    log_free(&g_log);
  }
  std::error_code ignored;
  if (!g_dir.empty()) std::filesystem::remove_all(g_dir, ignored);
}

const std::string& scratch_dir() {
  if (g_dir.empty()) {
    char pattern[] = "/tmp/install-fuzz.XXXXXX";
    if (mkdtemp(pattern) == nullptr) {
      perror("mkdtemp");
      abort();
    }
    g_dir = pattern;
    atexit(remove_scratch);
  }
  return g_dir;
}

}  // namespace

std::string_view fuzz_text(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

std::string fuzz_write(const char* name, std::string_view text) {
  std::string path = scratch_dir() + "/" + name;
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  return path;
}

std::string_view fuzz_take_line(std::string_view& text) {
  size_t end = text.find('\n');
  std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return line;
}

void fuzz_open_log() {
  if (g_log != nullptr) return;
  g_log = log_create(static_cast<unsigned>(log_level::debug));
  log_set_rotation(g_log, 1, 65536);
  if (log_open(g_log, (scratch_dir() + "/fuzz.log").c_str()) == 0) abort();
  log_set_current(g_log);
}

void fuzz_require(bool holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "property broken: %s\n", what);
  abort();
}

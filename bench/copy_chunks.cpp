// How fast can a tree of large files be copied by a chunked loop at all?
// Copies every file of SOURCE into DESTINATION (which must exist) one way,
// and prints the wall time in microseconds:
//
//   copy_chunks read-write|read-write-stream|range-chunk|range-whole SOURCE DESTINATION
//
//   read-write         read() and write() of one 8,192-byte chunk at a time
//   read-write-stream  read() and write() of a 128 KiB stream buffer of
//                      8,192-byte chunks, the program's copy loop
//   range-chunk        copy_file_range() of 8,192 bytes at a time
//   range-whole        copy_file_range() of the whole file, as cp does
//
// bench/run.sh runs it on the 8 MiB tree to show the floor each loop sets,
// apart from everything else the program does.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr size_t kChunk = 8192;
constexpr size_t kStream = 16 * kChunk;

enum class way { read_write, read_write_stream, range_chunk, range_whole };

bool read_write(int in, int out, size_t size) {
  static char buffer[kStream];
  for (;;) {
    ssize_t got = read(in, buffer, size);
    if (got <= 0) return got == 0;
    if (write(out, buffer, static_cast<size_t>(got)) != got) return false;
  }
}

bool range(int in, int out, size_t length) {
  for (;;) {
    ssize_t moved = copy_file_range(in, nullptr, out, nullptr, length, 0);
    if (moved <= 0) return moved == 0;
  }
}

bool copy_one(way how, const std::string& from, const std::string& to) {
  int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
  int out = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  bool ok = in >= 0 && out >= 0;
  if (ok && how == way::read_write) ok = read_write(in, out, kChunk);
  if (ok && how == way::read_write_stream) ok = read_write(in, out, kStream);
  if (ok && how == way::range_chunk) ok = range(in, out, kChunk);
  if (ok && how == way::range_whole) ok = range(in, out, size_t{1} << 30);
  if (in >= 0) close(in);
  if (out >= 0) close(out);
  return ok;
}

std::vector<std::string> regular_files(const char* dir) {
  std::vector<std::string> names;
  DIR* stream = opendir(dir);
  if (stream == nullptr) return names;
  while (const dirent* entry = readdir(stream)) {
    if (entry->d_type == DT_REG) names.emplace_back(entry->d_name);
  }
  closedir(stream);
  return names;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(
        stderr,
        "usage: %s read-write|read-write-stream|range-chunk|range-whole SOURCE DESTINATION\n",
        argv[0]);
    return 2;
  }
  way how = way::read_write;
  if (std::strcmp(argv[1], "read-write-stream") == 0) how = way::read_write_stream;
  if (std::strcmp(argv[1], "range-chunk") == 0) how = way::range_chunk;
  if (std::strcmp(argv[1], "range-whole") == 0) how = way::range_whole;
  std::vector<std::string> names = regular_files(argv[2]);
  auto start = std::chrono::steady_clock::now();
  for (const std::string& name : names) {
    if (!copy_one(how, std::string(argv[2]) + "/" + name, std::string(argv[3]) + "/" + name)) {
      std::perror(name.c_str());
      return 1;
    }
  }
  auto elapsed = std::chrono::steady_clock::now() - start;
  std::printf("%lld\n",
              static_cast<long long>(
                  std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count()));
  return 0;
}

// Small RAII holders so that every early return closes what it opened.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

struct file_closer {
  void operator()(FILE* stream) const noexcept {
    if (stream != nullptr) fclose(stream);
  }
};
using unique_file = std::unique_ptr<FILE, file_closer>;

struct dir_closer {
  void operator()(DIR* dir) const noexcept {
    if (dir != nullptr) closedir(dir);
  }
};
using unique_dir = std::unique_ptr<DIR, dir_closer>;

// An owned file descriptor, closed on destruction.
class unique_fd {
 public:
  unique_fd() = default;
  explicit unique_fd(int fd) : fd_(fd) {}
  unique_fd(const unique_fd&) = delete;
  unique_fd& operator=(const unique_fd&) = delete;
  unique_fd(unique_fd&& other) noexcept : fd_(other.release()) {}
  unique_fd& operator=(unique_fd&& other) noexcept {
    reset(other.release());
    return *this;
  }
  ~unique_fd() { reset(); }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  int release() {
    int fd = fd_;
    fd_ = -1;
    return fd;
  }
  void reset(int fd = -1) {
    if (fd_ >= 0) close(fd_);
    fd_ = fd;
  }

 private:
  int fd_ = -1;
};

#include "output_file.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
  throw std::runtime_error(path + ": " + reason);
}

/// The files that a signal has to remove. A slot is free when its name is empty.
struct PartialName {
  std::atomic<bool> used = false;
  std::array<char, 4096> name = {};
};
std::array<PartialName, 16> partialNames;

extern "C" void RemovePartialFiles(int signal) {
  for (const PartialName& partial : partialNames) {
    if (partial.used) unlink(partial.name.data());
  }
  std::signal(signal, SIG_DFL);
  raise(signal);
}

/// Remembers the name for RemovePartialFiles(). @return the slot; partialNames.size() when there is none
std::size_t Remember(const std::string& name) {
  static const bool installed = [] {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      if (std::signal(signal, RemovePartialFiles) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
    return true;
  }();
  for (std::size_t slot = 0; installed && slot < partialNames.size(); ++slot) {
    PartialName& partial = partialNames[slot];
    if (partial.used || name.size() >= partial.name.size()) continue;
    std::memcpy(partial.name.data(), name.c_str(), name.size() + 1);
    partial.used = true;
    return slot;
  }
  return partialNames.size();
}

void Forget(std::size_t slot) noexcept {
  if (slot < partialNames.size()) partialNames[slot].used = false;
}

/// The file behind symbolic links, so that they survive the renaming.
fs::path TargetOf(const std::string& path) {
  std::error_code error;
  fs::path target = fs::weakly_canonical(fs::absolute(path), error);
  if (error) Fail(path, error.message());
  return target;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : m_path(path), m_target(TargetOf(path)) {
  std::error_code error;
  const fs::path folder = fs::path(m_target).parent_path();
  if (fs::is_directory(m_target, error)) Fail(path, "is a folder");
  if (fs::exists(m_target, error) && !fs::is_regular_file(m_target, error)) Fail(path, "is not a plain file");
  if (!fs::is_directory(folder, error)) Fail(path, "its folder does not exist");

  struct stat old = {};
  const bool replaces = stat(m_target.c_str(), &old) == 0;
  if (replaces && access(m_target.c_str(), W_OK) != 0) Fail(path, std::strerror(errno));
  m_partial = m_target + "." + std::to_string(getpid()) + ".part";
  const int descriptor = open(m_partial.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor < 0) Fail(path, std::strerror(errno));
  m_slot = Remember(m_partial);
  m_stream = fdopen(descriptor, "w+b");
  if (m_stream == nullptr || (replaces && fchmod(descriptor, old.st_mode & 07777) != 0)) {
    const std::string reason = std::strerror(errno);
    if (m_stream == nullptr) close(descriptor);
    TakeBack();
    Fail(path, reason);
  }
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : m_path(std::move(other.m_path)),
      m_target(std::move(other.m_target)),
      m_partial(std::exchange(other.m_partial, {})),
      m_old(std::exchange(other.m_old, {})),
      m_stream(std::exchange(other.m_stream, nullptr)),
      m_slot(std::exchange(other.m_slot, partialNames.size())),
      m_published(other.m_published) {}

OutputFile::~OutputFile() {
  if (!m_published) TakeBack();
}

void OutputFile::Close() {
  const bool written = std::fflush(m_stream) == 0 && std::ferror(m_stream) == 0 && fsync(fileno(m_stream)) == 0;
  const int reason = errno;
  const bool closed = std::fclose(std::exchange(m_stream, nullptr)) == 0;
  if (!written || !closed) Fail(m_path, std::strerror(written ? errno : reason));
}

void OutputFile::KeepOld() {
  std::error_code error;
  if (!fs::exists(m_target, error)) return;
  m_old = m_partial + ".old";
  fs::create_hard_link(m_target, m_old, error);
  if (error) fs::copy_file(m_target, m_old, error);  // a file system without links
  if (error) {
    m_old.clear();
    Fail(m_path, error.message());
  }
}

void OutputFile::Publish() {
  std::error_code error;
  fs::rename(m_partial, m_target, error);
  if (error) Fail(m_path, error.message());
  Forget(m_slot);
  m_published = true;
}

void OutputFile::TakeBack() noexcept {
  if (m_stream != nullptr) std::fclose(std::exchange(m_stream, nullptr));
  std::error_code ignored;
  if (m_published && !m_old.empty()) {
    fs::rename(m_old, m_target, ignored);
  } else if (m_published) {
    fs::remove(m_target, ignored);
  } else if (!m_partial.empty()) {
    fs::remove(m_partial, ignored);
    if (!m_old.empty()) fs::remove(m_old, ignored);
  }
  m_published = false;
  m_partial.clear();
  m_old.clear();
  Forget(m_slot);
}

void OutputFile::PublishAll(std::vector<OutputFile>& files) {
  for (OutputFile& file : files) file.Close();
  try {
    // One file needs no way back: its move is done or not.
    if (files.size() > 1) {
      for (OutputFile& file : files) file.KeepOld();
    }
    for (OutputFile& file : files) file.Publish();
  } catch (...) {
    for (OutputFile& file : files) file.TakeBack();
    throw;
  }
  std::error_code ignored;
  for (const OutputFile& file : files) {
    if (!file.m_old.empty()) fs::remove(file.m_old, ignored);
  }
}

bool IsSameFile(const std::string& a, const std::string& b) {
  const auto same = [](const fs::path& left, const fs::path& right) {
    struct stat of = {}, to = {};
    return stat(left.c_str(), &of) == 0 && stat(right.c_str(), &to) == 0 && of.st_dev == to.st_dev &&
           of.st_ino == to.st_ino;
  };
  const fs::path left = TargetOf(a), right = TargetOf(b);
  return same(left, right) || (left.filename() == right.filename() && same(left.parent_path(), right.parent_path()));
}

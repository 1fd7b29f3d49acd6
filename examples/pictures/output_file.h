#pragma once

#include <cstdio>
#include <string>
#include <vector>

/// A file that comes to its place whole or not at all.
///
/// What is written goes to a new file beside the place, which PublishAll() moves over it. An existing file keeps its
/// permissions, a symbolic link stays and what it points to is replaced. Without PublishAll(), and when SIGINT, SIGTERM
/// or SIGHUP ends the program, the new file is removed and the old one stays as it was.
class OutputFile {
 public:
  /// Makes the new file, so that a place that cannot be written is found before the work.
  /// @throws std::runtime_error with one line that names @p path.
  explicit OutputFile(const std::string& path);
  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&&) = delete;
  ~OutputFile();

  /// The path as it was given.
  [[nodiscard]] const std::string& Path() const noexcept { return m_path; }
  /// Where to write.
  [[nodiscard]] std::FILE* Stream() const noexcept { return m_stream; }

  /// Moves all of @p files to their places. When one cannot be moved none is: the old files are put back.
  /// @throws std::runtime_error with one line that names the file that failed.
  static void PublishAll(std::vector<OutputFile>& files);

 private:
  void Close();
  void KeepOld();
  void Publish();
  void TakeBack() noexcept;

  std::string m_path, m_target, m_partial, m_old;
  std::FILE* m_stream = nullptr;
  std::size_t m_slot = 0;
  bool m_published = false;
};

/// Whether two paths lead to one file, or will when they are written: compared by device and inode, of the folder and
/// the name where there is no file yet.
bool IsSameFile(const std::string& a, const std::string& b);

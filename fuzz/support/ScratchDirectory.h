#ifndef FUZZ_SUPPORT_SCRATCHDIRECTORY_H
#define FUZZ_SUPPORT_SCRATCHDIRECTORY_H

#include <string>
#include <string_view>
#include <vector>

/// A directory for the files of a harness, below the one for temporary files. It is removed when
/// the process ends normally.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  ~ScratchDirectory();

  /// The path of the file of that name in it.
  std::string path(const std::string& name) const { return m_path + "/" + name; }
  void write(const std::string& name, std::string_view bytes) const;
  /// The paths of what is in the directory of that name in it.
  std::vector<std::string> list(const std::string& name) const;
  void makeDirectory(const std::string& name) const;
  /// Makes the directory of that name in it the working directory.
  void enter(const std::string& name) const;
  /// Removes what is in the directory of that name in it.
  void empty(const std::string& name) const;
  static std::string read(const std::string& path);

 private:
  std::string m_path;
};

#endif

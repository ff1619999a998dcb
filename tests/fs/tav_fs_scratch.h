// tav_fs_scratch.h - a temporary directory that a test creates, fills and removes again.
//
// Set-up and checks go through std::filesystem and the standard streams, not through the
// classes under test. The directory lies under the system's temporary directory; its text
// ends with the native separator, as a TavClLocation does. Beside it: the native separator
// and the check of an error record that the file system tests share.

#ifndef TAV_FS_SCRATCH_H
#define TAV_FS_SCRATCH_H

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include "tav_error.h"
#include "tav_filename.h"
#include "tav_process.h"

#if defined(_WIN32)
#include <windows.h>  // only to set the hidden attribute
#endif

namespace tav::test {

inline const bool kNativeIsSlash = TavClPathProperty::getNativeStyle() == TAV_PATH_STYLE_SLASH;
inline const char kNativeSeparator = kNativeIsSlash ? '/' : '\\';

inline void expectError(const _TavStError& error, uint32_t id, TavEnErrorClass errorClass) {
  EXPECT_EQ(std::make_pair(error.id, error.errorClass), std::make_pair(id, errorClass));
}
inline void expectNoError(const _TavStError& error) { EXPECT_EQ(error.id, 0u); }

struct ScratchDirectory {
  ScratchDirectory() {
    static unsigned counter = 0;
    root = std::filesystem::temp_directory_path() /
           ("tav-fs-" + std::to_string(TavClProcessProperty().getId()) + "-" +
            std::to_string(counter++));
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root);
    // The working directory the library reads is the resolved one.
    root = std::filesystem::canonical(root);
  }
  ~ScratchDirectory() {
    // Read-only files cannot be removed on Windows.
    std::error_code ignored;
    for (auto it = std::filesystem::recursive_directory_iterator(root, ignored);
         it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
      std::filesystem::permissions(it->path(), std::filesystem::perms::owner_write,
                                   std::filesystem::perm_options::add, ignored);
    }
    std::filesystem::remove_all(root, ignored);
  }

  // The directory text with its final separator.
  std::string text() const { return root.string() + kNativeSeparator; }
  // A name inside, given with '/' separators, in the native style.
  std::string path(const std::string& relative) const {
    return (root / std::filesystem::path(relative).make_preferred()).string();
  }

  void writeFile(const std::string& relative, const std::string& contents) const {
    std::filesystem::create_directories(std::filesystem::path(path(relative)).parent_path());
    std::ofstream out(path(relative), std::ios::binary | std::ios::trunc);
    out << contents;
    ASSERT_TRUE(out.good()) << relative;
  }
  void makeDirectory(const std::string& relative) const {
    std::filesystem::create_directories(path(relative));
  }
  std::string readFile(const std::string& relative) const {
    std::ifstream in(path(relative), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  bool exists(const std::string& relative) const { return std::filesystem::exists(path(relative)); }
  // The number of entries directly inside (without "." and "..").
  size_t countEntries(const std::string& relative = "") const {
    const std::filesystem::directory_iterator entries(path(relative));
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
  }
  // Gives a file the hidden attribute on Windows; POSIX has no such attribute.
  void makeHidden([[maybe_unused]] const std::string& relative) const {
#if defined(_WIN32)
    SetFileAttributesA(path(relative).c_str(), FILE_ATTRIBUTE_HIDDEN);
#endif
  }

  std::filesystem::path root;
};

// Changes the working directory for the lifetime of the object.
struct CurrentDirectoryChange {
  explicit CurrentDirectoryChange(const std::string& directory) {
    std::filesystem::current_path(directory);
  }
  ~CurrentDirectoryChange() { std::filesystem::current_path(previous); }
  const std::filesystem::path previous = std::filesystem::current_path();
};

}  // namespace tav::test

#endif  // TAV_FS_SCRATCH_H

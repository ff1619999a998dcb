// Replacing the parts of file names, the 260-character limit, copies and backup names.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tav_filename.h"
#include "tav_test_data.h"

namespace {

TEST(FilenameEditing, EachEditorReplacesOnlyItsPart) {
  TavClFilename name("C:\\old\\f.txt");
  for (const auto& row : tav::test::readDataTable("fs/filename_edits.txt", 4)) {
    SCOPED_TRACE(row.where);
    const std::string& edit = row.str(0);
    const char* argument = row.text(1);
    if (edit == "base name") name.setNewBaseName(argument);
    if (edit == "extension") name.setNewExtension(argument);
    if (edit == "name") name.setNewName(argument);
    if (edit == "location") name.setNewPath(TavClLocation(argument));
    if (edit == "path") name.setNewPath(argument);
    if (edit == "location, name") name.setNew(TavClLocation(argument), "b.c");
    if (edit == "remove path") name.removePath();
    EXPECT_EQ(name.getAsCString(), row.str(2));
    EXPECT_EQ(name.getExtension(), row.str(3));
    EXPECT_EQ(name.hasServer(), row.str(2).compare(0, 2, "\\\\") == 0);
    EXPECT_EQ(name.getPathStyle(), name.getStyle(row.text(2)));
  }
  EXPECT_STREQ(TavClFilename(TavClLocation("C:\\tmp"), "f", "ini").getAsCString(),
               "C:\\tmp\\f.ini");

  // Arguments may point into the name itself.
  name = TavClFilename("C:\\a\\b.txt");
  name.setNewName(name.getName());
  EXPECT_STREQ(name.getAsCString(), "C:\\a\\b.txt");
  name.setNewBaseName(name.getName());
  EXPECT_STREQ(name.getAsCString(), "C:\\a\\b.txt.txt");
  name.setNewExtension(name.getExtension());
  EXPECT_STREQ(name.getAsCString(), "C:\\a\\b.txt.txt");
  name.setNewPath(name.getAsCString());
  EXPECT_STREQ(name.getAsCString(), "C:\\a\\b.txt.txt\\b.txt.txt");
}

TEST(FilenameEditing, NoEditGoesPast260Characters) {
  const std::string directory = "C:\\" + std::string(250, 'd');  // 253 characters
  TavClFilename name(directory.c_str(), "name", "txt");
  EXPECT_EQ(std::string(name.getAsCString()), directory + "\\name.t");
  name.setNewBaseName(std::string(400, 'b').c_str());
  EXPECT_EQ(name.getLength(), 260u);
  name.setNewName("n");
  EXPECT_EQ(std::string(name.getAsCString()), directory + "\\n");
  name.setNewExtension("extension");
  EXPECT_EQ(std::string(name.getAsCString()), directory + "\\n.exte");
  name.setNewPath(std::string(300, 'p').c_str());
  // The path fills the buffer: neither separator nor name had room.
  EXPECT_EQ(std::string(name.getAsCString()), std::string(260, 'p'));

  const TavClBakFilename backup(TavClFilename((directory + "\\ab").c_str()));
  EXPECT_EQ(std::string(backup.getAsCString()), directory + "\\ab.BAK");
  const TavClBakFilename cut(TavClFilename((directory + "\\abcd").c_str()));
  EXPECT_EQ(std::string(cut.getAsCString()), directory + "\\abcd.B");
  EXPECT_STREQ(TavClBakFilename(TavClFilename("/x/DATA")).getExtension(), ".BAK");
}

// The original lives on the heap and is gone before the copy is read: a part pointer left
// pointing into it is a use after free under AddressSanitizer, and a wrong part everywhere.
TEST(FilenameCopies, EveryPartPointerFollowsTheCopy) {
  auto original = std::make_unique<TavClFilename>("\\\\srv\\share\\dir\\file.txt");
  const TavClFilename copied(*original);
  TavClFilename assigned;
  assigned = *original;
  const TavClBakFilename backup(*original);
  TavClFilename fromBackup;
  fromBackup = backup;
  original.reset();
  // Assigning a name to itself keeps it.
  const TavClFilename& alias = assigned;
  assigned = alias;
  assigned = static_cast<const TavClFilenameABase&>(alias);

  for (const TavClFilename* name : {&copied, static_cast<const TavClFilename*>(&assigned)}) {
    char out[TAV_PATH_BUFFER_SIZE];
    name->extractServer(out);
    EXPECT_STREQ(out, "\\\\srv\\share");
    name->extractPath(out, false);
    EXPECT_STREQ(out, "\\\\srv\\share\\dir");
    EXPECT_STREQ(name->getName(), "file.txt");
    EXPECT_STREQ(name->getExtension(), ".txt");
    EXPECT_STREQ(name->getPathStart(), "\\dir\\file.txt");
  }
  EXPECT_STREQ(fromBackup.getAsCString(), "\\\\srv\\share\\dir\\file.txt.BAK");
  EXPECT_STREQ(fromBackup.getExtension(), ".txt.BAK");
  EXPECT_EQ(fromBackup.getBaseNameLength(), 4u);
}

}  // namespace

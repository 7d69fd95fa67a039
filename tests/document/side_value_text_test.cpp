#include "document/side_value_text.h"

#include <gtest/gtest.h>

#include <string>

#include "persist/document_file.h"
#include "persist/side_values.h"
#include "support/temp_dir.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

constexpr uint16_t kNotes = 1;
constexpr uint16_t kFiles = 2;

class SideValueTextTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({testing::Field("Name", FieldType::kText),
               testing::Field("Notes", FieldType::kLongText),
               testing::Field("Files", FieldType::kFiles)});
    book.fileName = dir.Path("book.kpx");
  }
  std::string Shown(uint32_t row, uint16_t column, FieldType type) {
    std::string shown = "stale";
    ErrorCode error = err::kNone;
    EXPECT_TRUE(SideValueText(book, Data(), row, column, type, shown, error)) << int(error);
    return shown;
  }
  testing::TempDir dir;
};

TEST_F(SideValueTextTest, ShowsTheStartOfLongTextAndTheNamesOfFiles) {
  SetLongTextValue(book, Data(), 0, kNotes,
                   "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}Kelp \\b forest\\par second}");
  SetLongTextValue(book, Data(), 1, kNotes, "plain first line\nsecond line");
  BinaryObjectList files;
  ASSERT_NE(files.Append("reef.png", "png", "\x89PNG"), nullptr);
  ASSERT_NE(files.Append("notes.txt", "txt", "tide"), nullptr);
  SetObjectsValue(book, Data(), 0, kFiles, files);
  // Pending values, before any save, already show.
  EXPECT_EQ(Shown(0, kNotes, FieldType::kLongText), "Kelp forest");
  EXPECT_EQ(Shown(1, kNotes, FieldType::kLongText), "plain first line");
  EXPECT_EQ(Shown(0, kFiles, FieldType::kFiles), "reef.png; notes.txt");
  // A cell with no value shows nothing.
  EXPECT_EQ(Shown(2, kNotes, FieldType::kLongText), "");
  EXPECT_EQ(Shown(1, kFiles, FieldType::kFiles), "");

  // Written to the side file, the cells hold offsets and the values are read from the file.
  PendingFlush flush;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(FlushPendingObjects(book, SideFilePath(book.fileName), flush, error));
  ASSERT_TRUE(Data().objects.empty());
  EXPECT_EQ(Shown(0, kNotes, FieldType::kLongText), "Kelp forest");
  EXPECT_EQ(Shown(0, kFiles, FieldType::kFiles), "reef.png; notes.txt");
}

TEST_F(SideValueTextTest, AMissingSideFileIsAnError) {
  SetLongTextValue(book, Data(), 0, kNotes, "gone");
  PendingFlush flush;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(FlushPendingObjects(book, SideFilePath(book.fileName), flush, error));
  book.fileName = dir.Path("elsewhere.kpx");
  std::string shown;
  EXPECT_FALSE(SideValueText(book, Data(), 0, kNotes, FieldType::kLongText, shown, error));
  EXPECT_NE(error, err::kNone);
}

}  // namespace
}  // namespace kelpdex

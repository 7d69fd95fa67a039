#include "persist/document_file.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "persist/xml_writer.h"
#include "platform/os.h"
#include "store/row_block.h"
#include "support/file_bytes.h"
#include "support/other_process.h"
#include "support/temp_dir.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

class DocumentFileTest : public ::testing::Test {
 protected:
  testing::TempDir dir;
};

TEST_F(DocumentFileTest, EachFormSavesAndReadsBackByItsKind) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  const struct {
    NativeFormat format;
    NativeFileKind kind;
  } forms[] = {{NativeFormat::kXml, NativeFileKind::kXml},
               {NativeFormat::kXmlCompressed, NativeFileKind::kXmlCompressed},
               {NativeFormat::kBinary, NativeFileKind::kBinary},
               {NativeFormat::kBinaryCompressed, NativeFileKind::kBinaryCompressed}};
  for (const auto& form : forms) {
    std::string path = dir.Path("doc" + std::to_string(int(form.format)) + ".kpx");
    ErrorCode error = err::kNone;
    ASSERT_TRUE(WriteDocumentFile(path, book, form.format, error)) << int(error);
    Workbook back;
    NativeFileKind kind;
    ASSERT_TRUE(ReadDocumentFile(path, back, kind, error)) << int(error);
    EXPECT_EQ(kind, form.kind);
    testing::ExpectSameWorkbook(book, back);
  }
  testing::WriteFileBytes(dir.Path("empty.kpx"), "");
  Workbook untouched;
  NativeFileKind kind;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(ReadDocumentFile(dir.Path("empty.kpx"), untouched, kind, error));
  EXPECT_EQ(kind, NativeFileKind::kEmpty);
  EXPECT_EQ(untouched.firstNode, nullptr);
}

TEST_F(DocumentFileTest, AFailedSaveLeavesThePreviousFileAndNoTemporary) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  std::string path = dir.Path("keep.kpx");
  ErrorCode error = err::kNone;
  ASSERT_TRUE(WriteDocumentFile(path, book, NativeFormat::kXml, error));
  std::string before = testing::ReadFileBytes(path);
  // A text too long for the XML form fails the save half-way.
  std::vector<uint8_t> record(kBlockPayload);
  cell::EncodeText(record.data(), 0, 5, std::string(kXmlEscapeLimit + 1, 'x'));
  ASSERT_TRUE(book.FindTable("People")->cells.PutCell(record.data()));
  EXPECT_FALSE(WriteDocumentFile(path, book, NativeFormat::kXml, error));
  EXPECT_EQ(error, err::kXmlInvalidData);
  EXPECT_EQ(testing::ReadFileBytes(path), before);
  EXPECT_FALSE(platform::FileExists(dir.Path(".keep.kpx.saving")));
  // The binary form holds it: the save goes through and replaces the file.
  ASSERT_TRUE(WriteDocumentFile(path, book, NativeFormat::kBinary, error));
  EXPECT_NE(testing::ReadFileBytes(path), before);
  EXPECT_FALSE(platform::FileExists(dir.Path(".keep.kpx.saving")));
  // A folder that does not exist cannot take the temporary file.
  EXPECT_FALSE(WriteDocumentFile(dir.Path("no/such/doc.kpx"), book, NativeFormat::kBinary, error));
  EXPECT_EQ(error, err::kFileOpenWrite);
}

TEST_F(DocumentFileTest, AnOpenDocumentIsInUseForAnotherProcess) {
  std::string path = dir.Path("locked.kpx");
  testing::WriteFileBytes(path, "30000000000");
  {
    platform::FileLock lock;
    ASSERT_EQ(lock.Acquire(path), platform::LockResult::kLocked);
    EXPECT_TRUE(lock.held());
    EXPECT_EQ(testing::LockInOtherProcess(path), platform::LockResult::kInUse);
  }
  EXPECT_EQ(testing::LockInOtherProcess(path), platform::LockResult::kLocked);
  platform::FileLock missing;
  EXPECT_EQ(missing.Acquire(dir.Path("absent.kpx")), platform::LockResult::kUnavailable);
}

}  // namespace
}  // namespace kelpdex

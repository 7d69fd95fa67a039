#include "persist/document_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

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

#ifndef _WIN32
// The mode, owner and group of a file, and whether the path itself is a symbolic link.
struct FileFacts {
  mode_t mode = 0;
  uid_t owner = 0;
  gid_t group = 0;
  bool link = false;
};

FileFacts FactsOf(const std::string& path) {
  struct stat st {};
  FileFacts facts;
  if (::lstat(path.c_str(), &st) == 0 && S_ISLNK(st.st_mode)) facts.link = true;
  if (::stat(path.c_str(), &st) == 0) {
    facts.mode = st.st_mode & 07777;
    facts.owner = st.st_uid;
    facts.group = st.st_gid;
  }
  return facts;
}

#endif

TEST_F(DocumentFileTest, ASaveKeepsTheModeOwnerAndGroupOfTheFileItReplaces) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX mode, owner and group";
#else
  Workbook book;
  testing::BuildSampleWorkbook(book);
  std::string path = dir.Path("private.kpx");
  ErrorCode error = err::kNone;
  ASSERT_TRUE(WriteDocumentFile(path, book, NativeFormat::kBinary, error));
  for (mode_t mode : {mode_t{0640}, mode_t{0600}, mode_t{0664}}) {
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    ASSERT_TRUE(WriteDocumentFile(path, book, NativeFormat::kXmlCompressed, error)) << int(error);
    EXPECT_EQ(FactsOf(path).mode, mode);
  }
  // Only a privileged process can give a file to someone else; it must keep doing so on save.
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(path.c_str(), 4321, 8765), 0);
    ASSERT_TRUE(WriteDocumentFile(path, book, NativeFormat::kBinary, error));
    FileFacts facts = FactsOf(path);
    EXPECT_EQ(facts.owner, 4321u);
    EXPECT_EQ(facts.group, 8765u);
  }
  Workbook back;
  NativeFileKind kind;
  ASSERT_TRUE(ReadDocumentFile(path, back, kind, error));
  testing::ExpectSameWorkbook(book, back);
#endif
}

TEST_F(DocumentFileTest, AReadOnlyDocumentIsNotSavedOver) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX permission bits";
#else
  if (::geteuid() == 0) GTEST_SKIP() << "root may write to any file; run as a plain user";
  Workbook book;
  testing::BuildSampleWorkbook(book);
  std::string path = dir.Write("readonly.kpx", "30000000000");
  ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
  ErrorCode error = err::kNone;
  EXPECT_FALSE(WriteDocumentFile(path, book, NativeFormat::kBinary, error));
  EXPECT_EQ(error, err::kFileOpenWrite);
  EXPECT_EQ(testing::ReadFileBytes(path), "30000000000");
  EXPECT_EQ(FactsOf(path).mode, mode_t{0444});
  EXPECT_FALSE(platform::FileExists(dir.Path(".readonly.kpx.saving")));
#endif
}

TEST_F(DocumentFileTest, SavingThroughALinkChangesTheDocumentAndKeepsTheLink) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX symbolic links";
#else
  Workbook book;
  testing::BuildSampleWorkbook(book);
  std::string real = dir.Write("data/real.kpx", "");
  ASSERT_EQ(::chmod(real.c_str(), 0640), 0);
  // A chain: an absolute link to a relative one in another folder.
  ASSERT_TRUE(platform::CreateFolder(dir.Path("links")));
  ASSERT_EQ(::symlink("../data/real.kpx", dir.Path("links/inner.kpx").c_str()), 0);
  std::string outer = dir.Path("outer.kpx");
  ASSERT_EQ(::symlink(dir.Path("links/inner.kpx").c_str(), outer.c_str()), 0);
  ErrorCode error = err::kNone;
  ASSERT_TRUE(WriteDocumentFile(outer, book, NativeFormat::kBinary, error)) << int(error);
  EXPECT_TRUE(FactsOf(outer).link);
  EXPECT_TRUE(FactsOf(dir.Path("links/inner.kpx")).link);
  EXPECT_FALSE(FactsOf(real).link);
  EXPECT_EQ(FactsOf(real).mode, mode_t{0640});
  Workbook back;
  NativeFileKind kind;
  ASSERT_TRUE(ReadDocumentFile(real, back, kind, error));
  EXPECT_EQ(kind, NativeFileKind::kBinary);
  testing::ExpectSameWorkbook(book, back);
  // A link to a document not made yet makes it where the link points.
  std::string ahead = dir.Path("ahead.kpx");
  ASSERT_EQ(::symlink("data/later.kpx", ahead.c_str()), 0);
  ASSERT_TRUE(WriteDocumentFile(ahead, book, NativeFormat::kXml, error)) << int(error);
  EXPECT_TRUE(FactsOf(ahead).link);
  EXPECT_TRUE(platform::FileExists(dir.Path("data/later.kpx")));
  // A loop of links names no file at all.
  ASSERT_EQ(::symlink("loop.kpx", dir.Path("loop.kpx").c_str()), 0);
  EXPECT_FALSE(WriteDocumentFile(dir.Path("loop.kpx"), book, NativeFormat::kXml, error));
  EXPECT_EQ(error, err::kFileOpenWrite);
  // A folder is no document.
  EXPECT_FALSE(WriteDocumentFile(dir.Path("data"), book, NativeFormat::kXml, error));
  EXPECT_EQ(error, err::kFolderPath);
#endif
}

}  // namespace
}  // namespace kelpdex

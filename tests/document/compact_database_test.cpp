#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#ifndef _WIN32
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "core/strings.h"
#include "document/document_session.h"
#include "persist/document_file.h"
#include "persist/side_values.h"
#include "store/catalogue.h"
#include "store/cell_record.h"
#include "support/file_bytes.h"
#include "support/recording_prompter.h"
#include "support/temp_dir.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "undo/undo_stack.h"

namespace kelpdex {
namespace {

using testing::ReadFileBytes;

constexpr uint16_t kNotes = 1;
constexpr uint16_t kFiles = 2;
constexpr uint32_t kRecords = 40;

std::string Note(uint32_t row, int version) {
  return "note " + std::to_string(row) + " v" + std::to_string(version) +
         std::string(row * 13 % 300, static_cast<char>('a' + row % 26));
}

#ifndef _WIN32
// Dies on the status line that tells the given progress: a compaction killed half-way.
class KillingView : public DocumentView {
 public:
  void StatusChanged(const std::string& status) override {
    if (status == "Compacting T : 50%") raise(SIGKILL);
  }
};

// Puts a folder where the document stands once the live records are copied, so that writing the
// document again fails at the last step of a compaction.
class BlockingView : public DocumentView {
 public:
  explicit BlockingView(std::string path) : path_(std::move(path)) {}
  void StatusChanged(const std::string& status) override {
    if (status != "Compacting T : 100%") return;
    EXPECT_EQ(std::rename(path_.c_str(), (path_ + ".away").c_str()), 0);
    EXPECT_EQ(mkdir(path_.c_str(), 0700), 0);
  }

 private:
  std::string path_;
};

#endif

class CompactDatabaseTest : public ::testing::Test {
 protected:
  CompactDatabaseTest() : scope(prompter), session(book, settings) {}

  // A table T (Name, Notes, Files) whose notes were each written twice, the first versions dead.
  void MakeDocument() {
    ASSERT_TRUE(CreateTable(book, "T"));
    FieldSpec name, notes, files;
    name.name = "Name";
    notes.name = "Notes";
    notes.type = FieldType::kLongText;
    files.name = "Files";
    files.type = FieldType::kFiles;
    ASSERT_TRUE(InsertFields(book, 0, {name, notes, files}));
    ASSERT_TRUE(RefreshCurrentTable(book));
    for (uint32_t row = 0; row < kRecords; ++row)
      SetLongTextValue(book, Data(), row, kNotes, Note(row, 1));
    BinaryObjectList list;
    list.Append("a.png", "t", std::string(700, 'p'));
    list.Append("b.txt", "t", "bee");
    SetObjectsValue(book, Data(), 3, kFiles, list);
    ASSERT_TRUE(session.WriteDocument(&path, DocumentKind::kNative, NativeFormat::kBinary));
    ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
    for (uint32_t row = 0; row < kRecords; row += 2)
      SetLongTextValue(book, Data(), row, kNotes, Note(row, 2));
    ASSERT_TRUE(session.SaveDocument());
  }

  Worksheet& Data() { return *book.FindTable("T"); }

  std::string NoteOf(uint32_t row) {
    std::string text;
    bool present = false;
    ErrorCode error = err::kNone;
    EXPECT_TRUE(ReadLongTextValue(Data(), side, row, kNotes, text, present, error)) << int(error);
    return text;
  }

  void ExpectValues() {
    for (uint32_t row = 0; row < kRecords; ++row)
      EXPECT_EQ(NoteOf(row), Note(row, row % 2 ? 1 : 2));
    BinaryObjectList list;
    bool present = false;
    ErrorCode error = err::kNone;
    ASSERT_TRUE(ReadObjectsValue(Data(), side, 3, kFiles, list, present, error));
    ASSERT_EQ(list.count(), 2u);
    EXPECT_EQ(list.first()->next->Bytes(), "bee");
  }

  std::set<uint32_t> CellOffsets() {
    std::set<uint32_t> offsets;
    for (uint32_t row = 0; row < kRecords; ++row) {
      for (uint16_t column : {kNotes, kFiles}) {
        uint32_t offset = 0;
        if (StoredOffset(Data().cells.GetCell(row, column), offset)) offsets.insert(offset);
      }
    }
    return offsets;
  }

  std::set<uint32_t> FileRecords() {
    std::vector<uint32_t> records;
    ErrorCode error = err::kNone;
    EXPECT_TRUE(SideFile::ListRecords(side, records, error));
    return {records.begin(), records.end()};
  }

  std::string LastBox() const { return prompter.boxes.empty() ? "" : prompter.boxes.back().text; }

  // Nothing but the document and its side file stays in the folder.
  void ExpectNoLeftovers() {
    for (const char* extra : {"/data.tx21", "/data.tx22", "/.data.tx2.compacting"}) {
      EXPECT_FALSE(platform::FileExists(dir.path() + extra)) << extra;
    }
  }

  testing::TempDir dir;
  std::string path = dir.Path("data.kpx");
  std::string side = dir.Path("data.tx2");
  testing::RecordingPrompter prompter;
  testing::ScopedPrompter scope;
  Workbook book;
  SessionSettings settings;
  DocumentSession session;
};

TEST_F(CompactDatabaseTest, CompactionDropsDeadRecordsAndKeepsEveryValue) {
  MakeDocument();
  uint64_t before = 0, after = 0;
  ASSERT_TRUE(platform::GetFileSize(side, before));
  EXPECT_GT(FileRecords().size(), CellOffsets().size());
  // Two cells that share a record keep sharing one copy of it.
  uint8_t shared[cell::kNumberSize];
  uint32_t offset = 0;
  ASSERT_TRUE(StoredOffset(Data().cells.GetCell(1, kNotes), offset));
  cell::EncodeNumber(shared, 5, kNotes, offset);
  ASSERT_TRUE(Data().cells.PutCell(shared));
  ASSERT_TRUE(session.SaveDocument());

  ASSERT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kCompacted);
  EXPECT_EQ(LastBox(), LoadStringText(str::kCompacted));
  ASSERT_TRUE(platform::GetFileSize(side, after));
  EXPECT_LT(after, before);
  EXPECT_EQ(FileRecords(), CellOffsets());
  EXPECT_EQ(NoteOf(5), Note(1, 1));
  ExpectNoLeftovers();

  // The saved document points into the new file.
  session.ResetDocument();
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_EQ(NoteOf(5), Note(1, 1));
  // Row 5 leaves a record that row 1 still holds; row 7 leaves one that nobody holds.
  SetLongTextValue(book, Data(), 5, kNotes, Note(5, 1));
  SetLongTextValue(book, Data(), 7, kNotes, Note(7, 1));
  ExpectValues();
  // With nothing dead any more, a second run has nothing to do.
  ASSERT_TRUE(session.SaveDocument());
  session.ResetDocument();
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kCompacted);
  EXPECT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kNotNeeded);
  EXPECT_EQ(LastBox(), LoadStringText(str::kNoCompactingNeeded));
}

// Records another writer laid out otherwise (short lines, padding on a line of its own) move as
// they read; one with padding inside the value stops the compaction with the reader's code.
TEST_F(CompactDatabaseTest, ForeignLayoutsReadTheSameAfterCompactionAndBrokenOnesStopIt) {
  MakeDocument();
  auto append = [&](const std::string& body) {
    uint64_t size = 0;
    EXPECT_TRUE(platform::GetFileSize(side, size));
    char header[32];
    std::snprintf(header, sizeof header, "--%010u 1\r\n\r\n", static_cast<unsigned>(size));
    FILE* f = std::fopen(side.c_str(), "ab");
    std::fputs(header, f);
    std::fputs(body.c_str(), f);
    std::fclose(f);
    uint8_t record[cell::kNumberSize];
    static uint32_t row = 30;
    cell::EncodeNumber(record, row++, kNotes, static_cast<double>(size));
    EXPECT_TRUE(Data().cells.PutCell(record));
  };
  // "abcdefghijkl" in lines of 8 characters, and "aaaa" with its padding on a line of its own.
  append("YWJjZGVm\r\nZ2hpamts\r\n\r\n");
  append("YWFh\r\nYQ==\r\n\r\n");
  ASSERT_TRUE(session.SaveDocument());
  ASSERT_EQ(NoteOf(30), "abcdefghijkl");
  ASSERT_EQ(NoteOf(31), "aaaa");
  ASSERT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kCompacted);
  EXPECT_EQ(NoteOf(30), "abcdefghijkl");
  EXPECT_EQ(NoteOf(31), "aaaa");
  EXPECT_EQ(FileRecords(), CellOffsets());

  append("YQ==YWFh\r\n\r\n");
  ASSERT_TRUE(session.SaveDocument());
  const std::string before = ReadFileBytes(side);
  EXPECT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kFailed);
  EXPECT_EQ(LastBox(), ErrorText(err::kBinaryFields));
  EXPECT_EQ(ReadFileBytes(side), before);
  ExpectNoLeftovers();
}

TEST_F(CompactDatabaseTest, ATableWithoutLongFieldsNeedsNoCompacting) {
  ASSERT_TRUE(CreateTable(book, "Plain"));
  ASSERT_TRUE(session.WriteDocument(&path, DocumentKind::kNative, NativeFormat::kBinary));
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kNotNeeded);
  EXPECT_EQ(LastBox(), LoadStringText(str::kNothingToCompact));
}

TEST_F(CompactDatabaseTest, AReadOnlySideFileIsLeftAsItWas) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX permission bits";
#else
  MakeDocument();
  const std::string sideBytes = ReadFileBytes(side);
  ASSERT_EQ(chmod(side.c_str(), 0444), 0);
  EXPECT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kFailed);
  EXPECT_EQ(LastBox(), ErrorText(err::kFileOpenWrite));
  EXPECT_EQ(ReadFileBytes(side), sideBytes);
  ExpectNoLeftovers();
  ExpectValues();
#endif
}

TEST_F(CompactDatabaseTest, ACompactionKilledHalfWayLeavesBothFilesUsable) {
#ifdef _WIN32
  GTEST_SKIP() << "needs fork and SIGKILL";
#else
  MakeDocument();
  const std::string sideBytes = ReadFileBytes(side);
  const std::set<uint32_t> offsets = CellOffsets();
  session.ResetDocument();
  pid_t child = fork();
  if (child == 0) {
    KillingView view;
    session.SetView(&view);
    session.OpenDocument(path, DocumentKind::kNative);
    session.CompactDatabase();
    _exit(0);  // the status line never said 50%: the test fails below
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(ReadFileBytes(side), sideBytes);
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_EQ(CellOffsets(), offsets);
  ExpectValues();
  // The next compaction takes over what the killed one left behind.
  EXPECT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kCompacted);
  ExpectNoLeftovers();
  ExpectValues();
#endif
}

TEST_F(CompactDatabaseTest, ADocumentThatCannotBeWrittenStopsTheCompactionWithNothingChanged) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX mkdir and rmdir";
#else
  MakeDocument();
  const std::string sideBytes = ReadFileBytes(side);
  const std::set<uint32_t> offsets = CellOffsets();
  BlockingView view(path);
  session.SetView(&view);
  EXPECT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kFailed);
  session.SetView(nullptr);
  EXPECT_EQ(LastBox(), ErrorText(err::kFolderPath));
  EXPECT_EQ(ReadFileBytes(side), sideBytes);
  EXPECT_EQ(CellOffsets(), offsets);
  ExpectValues();
  ASSERT_EQ(rmdir(path.c_str()), 0);
  ASSERT_EQ(std::rename((path + ".away").c_str(), path.c_str()), 0);
  ExpectNoLeftovers();
  EXPECT_FALSE(platform::FileExists(dir.Path(".data.kpx.saving")));
#endif
}

#ifndef _WIN32
// Once the live records are copied, no file may grow past the old side file's size: the process
// dies while writing the document, which is larger. The new document must not be half in place
// with the compacted side file already swapped in.
class FileSizeLimitView : public DocumentView {
 public:
  explicit FileSizeLimitView(rlim_t limit) : limit_(limit) {}
  void StatusChanged(const std::string& status) override {
    if (status != "Compacting T : 100%") return;
    rlimit limit{limit_, limit_};
    setrlimit(RLIMIT_FSIZE, &limit);
  }

 private:
  rlim_t limit_;
};

#endif

TEST_F(CompactDatabaseTest, ACompactionKilledWhileWritingTheDocumentLeavesBothFilesUsable) {
#ifdef _WIN32
  GTEST_SKIP() << "needs fork and RLIMIT_FSIZE";
#else
  MakeDocument();
  // Names long enough that the document outgrows the side file.
  for (uint32_t row = 0; row < kRecords; ++row) {
    uint8_t record[1100];
    cell::EncodeText(record, row, 0, std::string(1000, static_cast<char>('A' + row % 26)));
    ASSERT_TRUE(Data().cells.PutCell(record));
  }
  ASSERT_TRUE(session.SaveDocument());
  const std::string sideBytes = ReadFileBytes(side);
  ASSERT_GT(ReadFileBytes(path).size(), sideBytes.size() + 4096);
  session.ResetDocument();
  pid_t child = fork();
  if (child == 0) {
    FileSizeLimitView view(sideBytes.size() + 1);
    session.SetView(&view);
    session.OpenDocument(path, DocumentKind::kNative);
    session.CompactDatabase();
    _exit(0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGXFSZ);
  EXPECT_EQ(ReadFileBytes(side), sideBytes);
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  ExpectValues();
  EXPECT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kCompacted);
  ExpectNoLeftovers();
  ExpectValues();
#endif
}

// Undo steps taken before a compaction point into the old file, whose dead records are gone.
TEST_F(CompactDatabaseTest, CompactionEndsTheUndoSteps) {
  MakeDocument();
  UndoStack undo(book);
  UndoContext context;
  context.firstColumn = context.lastColumn = context.activeColumn = kNotes;
  ASSERT_TRUE(undo.RecordCell(context, 1, kNotes));
  SetLongTextValue(book, Data(), 1, kNotes, "replaced again");
  ASSERT_TRUE(undo.CanUndo());
  ASSERT_EQ(session.CompactDatabase(), DocumentSession::Compaction::kCompacted);
  EXPECT_FALSE(undo.CanUndo());
  EXPECT_FALSE(undo.CanRedo());
  EXPECT_EQ(NoteOf(1), "replaced again");
  EXPECT_EQ(FileRecords(), CellOffsets());
}

TEST_F(CompactDatabaseTest, SaveAsCarriesTheSideFileAndAMissingOneFailsOnRead) {
  MakeDocument();
  SetLongTextValue(book, Data(), 1, kNotes, "pending at save as");
  prompter.saveChoices.push_back(SaveFileChoice{dir.Path("copy.kpx"), FileFilter::kDefault});
  ASSERT_TRUE(session.SaveDocumentAs());
  side = dir.Path("copy.tx2");
  EXPECT_EQ(NoteOf(1), "pending at save as");
  EXPECT_EQ(NoteOf(2), Note(2, 2));
  // The old side file never got the value saved under the new name.
  EXPECT_LT(ReadFileBytes(dir.Path("data.tx2")).size(), ReadFileBytes(side).size());

  session.ResetDocument();
  ASSERT_EQ(unlink(side.c_str()), 0);
  ASSERT_TRUE(session.OpenDocument(dir.Path("copy.kpx"), DocumentKind::kNative));
  std::string text;
  bool present = false;
  ErrorCode error = err::kNone;
  EXPECT_FALSE(ReadLongTextValue(Data(), side, 0, kNotes, text, present, error));
  EXPECT_EQ(error, err::kFileOpenRead);
  EXPECT_FALSE(platform::FileExists(side));
}

}  // namespace
}  // namespace kelpdex

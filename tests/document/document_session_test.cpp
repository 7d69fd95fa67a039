#include "document/document_session.h"

#include <gtest/gtest.h>

#include <signal.h>
#ifndef _WIN32
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#endif
#include "search/search_keys.h"

#include <string>
#include <vector>

#include "core/error_code.h"
#include "core/strings.h"
#include "format/generic_date.h"
#include "persist/document_file.h"
#include "store/catalogue.h"
#include "store/row_block.h"
#include "support/file_bytes.h"
#include "support/other_process.h"
#include "support/recording_prompter.h"
#include "support/temp_dir.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

using testing::ReadFileBytes;
using testing::WriteFileBytes;

class RecordingView : public DocumentView {
 public:
  void TitleChanged(const std::string& t) override { title = t; }
  void StatusChanged(const std::string& s) override { status = s; }
  void DocumentShown() override { events += "shown;"; }
  void DocumentCleared() override { events += "cleared;"; }
  void RecentFilesChanged() override { events += "recent;"; }
  std::string title;
  std::string status;
  std::string events;
};

// Stands for the text, Excel and xBase modules: records what it was asked to read or write.
class RecordingForeignFiles : public ForeignFiles {
 public:
  bool Read(DocumentKind kind, const std::string& path, Workbook& book, bool reuse) override {
    calls += "read " + std::to_string(static_cast<int>(kind)) + " " + platform::FileNameOf(path) +
             (reuse ? " again;" : ";");
    // A cancelled options dialog: the table is half made and no code is set.
    if (cancel) {
      CreateTable(book, "Half");
      return false;
    }
    return CreateTable(book, "Imported");
  }
  bool cancel = false;
  bool Write(DocumentKind kind, const std::string& path, const Workbook&) override {
    calls +=
        "write " + std::to_string(static_cast<int>(kind)) + " " + platform::FileNameOf(path) + ";";
    return true;
  }
  std::string calls;
};

class DocumentSessionTest : public ::testing::Test {
 protected:
  DocumentSessionTest() : scope(prompter), session(book, settings) {
    session.SetView(&view);
    session.SetForeignFiles(&foreign);
  }

  // A saved sample document in the given form.
  std::string SavedSample(const std::string& name, NativeFormat format = NativeFormat::kBinary) {
    Workbook sample;
    testing::BuildSampleWorkbook(sample);
    std::string path = dir.Path(name);
    ErrorCode error = err::kNone;
    EXPECT_TRUE(WriteDocumentFile(path, sample, format, error));
    return path;
  }

  std::string LastBoxText() const {
    return prompter.boxes.empty() ? std::string() : prompter.boxes.back().text;
  }

  // Types a text into the first record of the current table, as an edit would.
  void EditFirstRecord(const std::string& text) {
    uint8_t rec[256];
    cell::EncodeText(rec, 0, 0, text);
    ASSERT_TRUE(book.currentSheet->cells.PutCell(rec));
    session.MarkModified(true);
  }

  std::string FirstRecordText(Workbook& from) {
    Worksheet* sheet = from.FindTable("People");
    if (sheet == nullptr) return "<no table>";
    const CellRecord* rec = sheet->cells.GetCell(0, 0);
    return rec == nullptr ? std::string() : std::string(cell::Text(rec));
  }

  testing::TempDir dir;
  testing::RecordingPrompter prompter;
  testing::ScopedPrompter scope;
  Workbook book;
  SessionSettings settings;
  RecordingView view;
  RecordingForeignFiles foreign;
  DocumentSession session;
};

TEST_F(DocumentSessionTest, OpeningShowsTheDocumentAndTheSameFileTwiceDoesNothing) {
  std::string path = SavedSample("people.kpx", NativeFormat::kBinaryCompressed);
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_TRUE(session.HasDocument());
  EXPECT_EQ(book.fileName, path);
  EXPECT_EQ(book.fileFormat, NativeFormat::kBinaryCompressed);
  EXPECT_FALSE(book.modified);
  EXPECT_EQ(view.title, "people.kpx - Kelpdex");
  EXPECT_EQ(view.status.rfind("Format: Binary, compressed;    Size: ", 0), 0u) << view.status;
  EXPECT_EQ(view.events, "recent;shown;");
  ASSERT_EQ(settings.recentFiles.size(), 1u);
  EXPECT_EQ(settings.recentFiles[0], path);

  // Even with changes, the open document's own path asks nothing and keeps them.
  EditFirstRecord("changed");
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_TRUE(prompter.boxes.empty());
  EXPECT_EQ(FirstRecordText(book), "changed");
  EXPECT_TRUE(book.modified);
}

TEST_F(DocumentSessionTest, OpeningCompilesTheCurrentTableInEveryNativeForm) {
  for (NativeFormat format : {NativeFormat::kXml, NativeFormat::kXmlCompressed,
                              NativeFormat::kBinary, NativeFormat::kBinaryCompressed}) {
    std::string path = SavedSample("form" + std::to_string(int(format)) + ".kpx", format);
    ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative)) << int(format);
    // The current table's fields and records are ready for the grid and the commands.
    EXPECT_EQ(book.fieldDefaults.size(), 2u) << int(format);
    EXPECT_EQ(book.records.count(), 303u) << int(format);
  }
}

TEST_F(DocumentSessionTest, ATableOpensWithItsSavedFiltersInForce) {
  Workbook sample;
  testing::BuildSampleWorkbook(sample);
  TableSpec table;
  ASSERT_TRUE(MakeTableSpec(sample, "People", table));
  ASSERT_TRUE(SetFieldFilter(table, 1, "6:3 30"));  // Age from 3 to 30: rows 2 to 20
  std::string path = dir.Path("filtered.kpx");
  ErrorCode error = err::kNone;
  ASSERT_TRUE(WriteDocumentFile(path, sample, NativeFormat::kXml, error));
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_EQ(book.records.count(), 19u);
  EXPECT_EQ(book.records[0], 2u);
  EXPECT_EQ(book.records[19], 303u);  // the padding starts behind the last used row
}

TEST_F(DocumentSessionTest, TheSaveQuestionGuardsChangesWhenAnotherFileOpens) {
  std::string first = SavedSample("first.kpx");
  std::string second = SavedSample("second.kpx", NativeFormat::kXml);
  ASSERT_TRUE(session.OpenDocument(first, DocumentKind::kNative));
  EditFirstRecord("kept");

  prompter.answers = {answer::kCancel};
  EXPECT_FALSE(session.OpenDocument(second, DocumentKind::kNative));
  ASSERT_EQ(prompter.boxes.size(), 1u);
  EXPECT_EQ(prompter.boxes[0].text, "Save changes to first.kpx?");
  EXPECT_EQ(prompter.boxes[0].flags & mb::kButtonMask, mb::kYesNoCancel);
  EXPECT_EQ(book.fileName, first);
  EXPECT_EQ(FirstRecordText(book), "kept");
  EXPECT_TRUE(book.modified);

  // Yes saves the change into the first file before the second one opens.
  prompter.answers = {answer::kYes};
  ASSERT_TRUE(session.OpenDocument(second, DocumentKind::kNative));
  EXPECT_EQ(book.fileName, second);
  EXPECT_EQ(book.fileFormat, NativeFormat::kXml);
  Workbook reread;
  NativeFileKind kind;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(ReadDocumentFile(first, reread, kind, error));
  EXPECT_EQ(FirstRecordText(reread), "kept");
  EXPECT_EQ(settings.recentFiles, (std::vector<std::string>{second, first}));

  // No drops the change.
  EditFirstRecord("dropped");
  prompter.answers = {answer::kNo};
  ASSERT_TRUE(session.OpenDocument(first, DocumentKind::kNative));
  ASSERT_TRUE(ReadDocumentFile(second, reread, kind, error));
  EXPECT_EQ(FirstRecordText(reread), "person 0");
}

TEST_F(DocumentSessionTest, AFailedOpenIsShownAndLeavesNoDocument) {
  std::string good = SavedSample("good.kpx");
  ASSERT_TRUE(session.OpenDocument(good, DocumentKind::kNative));

  std::string junk = dir.Write("junk.kpx", "abcdefghijklmnop");
  EXPECT_FALSE(session.OpenDocument(junk, DocumentKind::kNative));
  EXPECT_FALSE(session.HasDocument());
  EXPECT_TRUE(book.fileName.empty());
  EXPECT_EQ(LastBoxText(), ErrorText(err::kInvalidBinaryFormat));
  EXPECT_EQ(view.title, "Kelpdex");
  EXPECT_EQ(settings.recentFiles, std::vector<std::string>{good});

  // An 11-byte header with one letter among the digits is no binary file either.
  std::string almost = dir.Write("almost.kpx", "3000000x000");
  EXPECT_FALSE(session.OpenDocument(almost, DocumentKind::kNative));
  EXPECT_EQ(LastBoxText(), ErrorText(err::kInvalidBinaryFormat));

  std::string broken =
      dir.Write("broken.kpx", "<?xml version=\"1.0\"?>\n<Workbook>\n<Nonsense/>\n</Workbook>\n");
  EXPECT_FALSE(session.OpenDocument(broken, DocumentKind::kNative));
  EXPECT_FALSE(session.HasDocument());
  EXPECT_NE(LastBoxText().find("Line: "), std::string::npos) << LastBoxText();

  EXPECT_FALSE(session.OpenDocument(dir.Path("absent.kpx"), DocumentKind::kNative));
  EXPECT_EQ(LastBoxText(), ErrorText(err::kFileOpenRead));
  EXPECT_FALSE(session.HasDocument());
}

TEST_F(DocumentSessionTest, AnEmptyFileBecomesANewDatabaseOfThatName) {
  std::string path = dir.Write("Inventory.kpx", "");
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_EQ(book.TableCount(), 1u);
  EXPECT_NE(book.FindTable("Inventory"), nullptr);
  EXPECT_EQ(book.fileName, path);
  EXPECT_TRUE(prompter.boxes.empty());
  // Saved as the default form, it is a real document afterwards.
  EditFirstRecord("first");
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_EQ(ReadFileBytes(path).rfind("<?xml", 0), 0u);
}

TEST_F(DocumentSessionTest, AShortFileIsReplacedOnlyWhenTheUserSaysSo) {
  std::string path = dir.Write("Stub.kpx", "<?xml");
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_NE(book.FindTable("Stub"), nullptr);
  EXPECT_TRUE(session.FileHeldNoDocument());
  EditFirstRecord("typed");
  // No keeps the bytes, and the changes with them.
  prompter.answers = {answer::kNo};
  EXPECT_FALSE(session.SaveDocument());
  ASSERT_EQ(prompter.boxes.size(), 1u);
  EXPECT_NE(prompter.boxes[0].text.find("Stub.kpx held 5 bytes"), std::string::npos)
      << prompter.boxes[0].text;
  EXPECT_EQ(prompter.boxes[0].flags & mb::kButtonMask, mb::kYesNo);
  EXPECT_EQ(ReadFileBytes(path), "<?xml");
  EXPECT_TRUE(book.modified);
  // Without an answer the cautious one keeps them too.
  EXPECT_FALSE(session.SaveDocument());
  EXPECT_EQ(ReadFileBytes(path), "<?xml");
  // Yes replaces them once; the next save asks nothing.
  prompter.answers = {answer::kYes};
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_FALSE(session.FileHeldNoDocument());
  EditFirstRecord("again");
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_EQ(prompter.boxes.size(), 3u);
  ASSERT_TRUE(session.ReloadDocument());
  EXPECT_FALSE(session.FileHeldNoDocument());
  Worksheet* stub = book.FindTable("Stub");
  ASSERT_NE(stub, nullptr);
  const CellRecord* typed = stub->cells.GetCell(0, 0);
  ASSERT_NE(typed, nullptr);
  EXPECT_EQ(cell::Text(typed), "again");
}

TEST_F(DocumentSessionTest, AFolderIsRefusedAsADocument) {
  std::string folder = dir.Path("folder.kpx");
  ASSERT_TRUE(platform::CreateFolder(folder));
  EXPECT_FALSE(session.OpenDocument(folder, DocumentKind::kNative));
  EXPECT_EQ(LastBoxText(), ErrorText(err::kFolderPath));
  EXPECT_FALSE(session.HasDocument());

  ASSERT_TRUE(session.OpenDocument(SavedSample("people.kpx"), DocumentKind::kNative));
  prompter.saveChoices = {SaveFileChoice{folder, FileFilter::kDefault}};
  EXPECT_FALSE(session.SaveDocumentAs());
  EXPECT_EQ(LastBoxText(), ErrorText(err::kFolderPath));
  EXPECT_TRUE(platform::FolderExists(folder));
  EXPECT_EQ(book.fileName, dir.Path("people.kpx"));
}

TEST_F(DocumentSessionTest, ForeignFilesTakeTheirOwnRouteByExtension) {
  std::string upper = dir.Write("data.TXT", "a\tb\n");
  std::string tsv = dir.Write("data.tsv", "a\tb\n");
  ASSERT_TRUE(session.OpenFromCommandLine(upper));
  EXPECT_EQ(book.openKind, DocumentKind::kText);
  ASSERT_TRUE(session.OpenFromCommandLine(tsv));
  EXPECT_EQ(foreign.calls, "read 1 data.TXT;read 1 data.tsv;");
  // The Open dialog's first two filters go by the extension too; the others name the kind.
  foreign.calls.clear();
  prompter.openChoices = {{upper, FileFilter::kDefault},
                          {tsv, FileFilter::kNative},
                          {upper, FileFilter::kExcelXml},
                          {tsv, FileFilter::kClipper}};
  for (int i = 0; i < 4; ++i) ASSERT_TRUE(session.OpenWithDialog());
  EXPECT_EQ(foreign.calls, "read 1 data.TXT;read 1 data.tsv;read 2 data.TXT;read 6 data.tsv;");
  EXPECT_EQ(settings.openFilter, FileFilter::kClipper);
  EXPECT_FALSE(session.OpenWithDialog());  // Cancel
  EXPECT_EQ(book.fileName, tsv);
  ASSERT_TRUE(session.CloseDocument());
  ASSERT_TRUE(session.OpenFromCommandLine(tsv));
  foreign.calls = "read 1 data.TXT;read 1 data.tsv;";
  EXPECT_EQ(session.StatusText().rfind("Format: Text", 0), 0u);
  // Cancelling the import's own dialog shows nothing and leaves no document, nor a lock.
  foreign.cancel = true;
  std::string other = dir.Write("other.csv", "x\n");
  EXPECT_FALSE(session.OpenFromCommandLine(other));
  EXPECT_FALSE(session.HasDocument());
  EXPECT_TRUE(prompter.boxes.empty());
  EXPECT_EQ(testing::LockInOtherProcess(other), platform::LockResult::kLocked);
  foreign.cancel = false;
  foreign.calls = "read 1 data.TXT;read 1 data.tsv;";
  ASSERT_TRUE(session.OpenFromCommandLine(tsv));
  foreign.calls = "read 1 data.TXT;read 1 data.tsv;";
  // Reload reads again with the import's options, and a save writes the same foreign form.
  ASSERT_TRUE(session.ReloadDocument());
  EditFirstRecord("x");
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_EQ(foreign.calls,
            "read 1 data.TXT;read 1 data.tsv;read 1 data.tsv again;write 1 data.tsv;");
}

TEST_F(DocumentSessionTest, AnXmlFileOpensAsNativeOrSpreadsheetByItsRootElement) {
  // A native document under .xml, which the extension alone would send to the Excel reader.
  std::string native = SavedSample("native.xml", NativeFormat::kXml);
  ASSERT_TRUE(session.OpenFromCommandLine(native));
  EXPECT_EQ(foreign.calls, "");
  EXPECT_EQ(book.openKind, DocumentKind::kNative);
  EXPECT_EQ(FirstRecordText(book), "person 0");
  std::string sheet = dir.Write("sheet.xml",
                                "<?xml version=\"1.0\"?>\n<Workbook "
                                "xmlns=\"urn:schemas-microsoft-com:office:spreadsheet\"/>");
  ASSERT_TRUE(session.OpenFromCommandLine(sheet));
  EXPECT_EQ(foreign.calls, "read 2 sheet.xml;");
  EXPECT_EQ(book.openKind, DocumentKind::kExcelXml);
}

TEST_F(DocumentSessionTest, ReloadDiscardsChangesWithoutAsking) {
  std::string path = SavedSample("reload.kpx");
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EditFirstRecord("scratch");
  ASSERT_TRUE(session.ReloadDocument());
  EXPECT_TRUE(prompter.boxes.empty());
  EXPECT_EQ(FirstRecordText(book), "person 0");
  EXPECT_FALSE(book.modified);
  EXPECT_EQ(book.fileName, path);

  // Without a file there is nothing to reload.
  session.ResetDocument();
  EXPECT_FALSE(session.ReloadDocument());
}

TEST_F(DocumentSessionTest, SavingStampsTheUserAndTimeAndKeepsTheForm) {
  std::string path = SavedSample("stamp.kpx", NativeFormat::kBinary);
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EditFirstRecord("saved");
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_FALSE(book.modified);
  EXPECT_EQ(book.lastSavedBy, platform::UserName());
  DateTimeRecord at;
  ASSERT_TRUE(ParseGenericDate(book.lastSavedAt, at));
  EXPECT_EQ(at.year, platform::GetLocalTime().year);
  EXPECT_NE(view.status.find(";    Last saved: "), std::string::npos) << view.status;
  // The file kept its binary form, and reads back with the change and the stamp.
  EXPECT_EQ(ReadFileBytes(path)[0], '3');
  Workbook reread;
  NativeFileKind kind;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(ReadDocumentFile(path, reread, kind, error));
  EXPECT_EQ(FirstRecordText(reread), "saved");
  EXPECT_EQ(reread.lastSavedAt, book.lastSavedAt);

  // The File Format menu changes the form of the next save.
  session.SetFileFormat(NativeFormat::kXmlCompressed);
  EXPECT_EQ(view.status.rfind("Format: Xml, compressed", 0), 0u);
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_EQ(ReadFileBytes(path).substr(0, 2), "\x1f\x8b");
}

TEST_F(DocumentSessionTest, AValueTooLongForTheXmlFormNamesItsTableRecordAndField) {
  std::string path = SavedSample("long.xml", NativeFormat::kXml);
  const std::string before = ReadFileBytes(path);
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  // Longer than any text typed into a record, yet the store holds it and the binary form too.
  std::vector<uint8_t> rec(kBlockPayload);
  cell::EncodeText(rec.data(), 4, 1, std::string(7000, 'x'));
  ASSERT_TRUE(book.currentSheet->cells.PutCell(rec.data()));
  session.MarkModified(true);
  EXPECT_FALSE(session.SaveDocument());
  EXPECT_EQ(LastBoxText(), std::string(ErrorText(err::kXmlInvalidData)) +
                               "\nTable: People\nRecord: 5\nField: Age");
  EXPECT_EQ(ReadFileBytes(path), before);
  EXPECT_TRUE(book.modified);
}

TEST_F(DocumentSessionTest, SaveAsSuppliesTheExtensionAndTakesTheSideFileAlong) {
  std::string path = SavedSample("orig.kpx");
  WriteFileBytes(SideFilePath(path), "--0000000000 1\r\n\r\nYQ==\r\n\r\n");
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EditFirstRecord("copy");

  prompter.saveChoices.push_back({dir.Path("copy"), FileFilter::kNative});
  ASSERT_TRUE(session.SaveDocumentAs());
  std::string copy = dir.Path("copy.kpx");
  EXPECT_EQ(book.fileName, copy);
  EXPECT_FALSE(book.modified);
  EXPECT_EQ(prompter.dialogs.back(), "save-as:" + path + ":1");
  EXPECT_EQ(ReadFileBytes(dir.Path("copy.tx2")), ReadFileBytes(SideFilePath(path)));
  EXPECT_EQ(view.title, "copy.kpx - Kelpdex");
  EXPECT_EQ(settings.recentFiles.front(), copy);
  // The old file has not changed.
  Workbook reread;
  NativeFileKind kind;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(ReadDocumentFile(path, reread, kind, error));
  EXPECT_EQ(FirstRecordText(reread), "person 0");
  // The status counts the side file in the size.
  EXPECT_NE(view.status.find(" ("), std::string::npos) << view.status;

  // A foreign filter writes through its module with that kind's extension.
  prompter.saveChoices.push_back({dir.Path("export"), FileFilter::kExcelXml});
  ASSERT_TRUE(session.SaveDocumentAs());
  EXPECT_EQ(foreign.calls, "write 2 export.xml;");
  EXPECT_EQ(book.openKind, DocumentKind::kExcelXml);

  // Cancel writes nothing.
  EXPECT_FALSE(session.SaveDocumentAs());
}

TEST_F(DocumentSessionTest, ANewDocumentIsSavedThroughSaveAsAndCloseCanBeCancelled) {
  std::string path = dir.Write("Blank.kpx", "");
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  session.ResetDocument();
  ASSERT_TRUE(CreateTable(book, "Fresh"));
  session.MarkModified(true);
  EXPECT_EQ(view.title, "New Database - Kelpdex");

  // Yes to the question, then Cancel in the file dialog: the document stays.
  prompter.answers = {answer::kYes};
  EXPECT_FALSE(session.CloseDocument());
  EXPECT_EQ(prompter.boxes.back().text, "Save changes to New Database?");
  EXPECT_TRUE(session.HasDocument());

  prompter.answers = {answer::kYes};
  prompter.saveChoices.push_back({dir.Path("fresh.kpx"), FileFilter::kDefault});
  ASSERT_TRUE(session.CloseDocument());
  EXPECT_FALSE(session.HasDocument());
  EXPECT_TRUE(platform::FileExists(dir.Path("fresh.kpx")));
  EXPECT_EQ(view.title, "Kelpdex");
}

#ifdef _WIN32
// Share modes stand between handles, so a second handle of this process holds the lock as
// another process would.
struct LockHolder {
  platform::FileLock lock;
  explicit LockHolder(const std::string& path) { lock.Acquire(path); }
};
#else
// Holds the lock on `path` in a child process until the returned pipe is closed.
struct LockHolder {
  pid_t child = -1;
  int release = -1;
  explicit LockHolder(const std::string& path) {
    int ready[2];
    int done[2];
    if (pipe(ready) != 0 || pipe(done) != 0) return;
    child = fork();
    if (child == 0) {
      close(done[1]);  // else the read below never sees the parent close its end
      platform::FileLock lock;
      char c = lock.Acquire(path) == platform::LockResult::kLocked ? 'y' : 'n';
      (void)!write(ready[1], &c, 1);
      (void)!read(done[0], &c, 1);
      _exit(0);
    }
    char c = 0;
    (void)!read(ready[0], &c, 1);
    close(ready[0]);
    close(ready[1]);
    close(done[0]);
    release = done[1];
  }
  ~LockHolder() {
    close(release);
    int status = 0;
    waitpid(child, &status, 0);
  }
};
#endif

TEST_F(DocumentSessionTest, AFileInUseIsOfferedReadOnlyAndNeverSavedOver) {
  std::string path = SavedSample("shared.kpx");
  std::string before = ReadFileBytes(path);
  LockHolder other(path);

  EXPECT_FALSE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_EQ(prompter.dialogs, std::vector<std::string>{"read-only:" + path});
  EXPECT_FALSE(session.HasDocument());

  prompter.readOnlyAnswers = {true};
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_TRUE(book.readOnly);
  EditFirstRecord("mine");
  EXPECT_FALSE(session.SaveDocument());
  EXPECT_EQ(ReadFileBytes(path), before);
  // Closing a read-only document asks nothing: there is nowhere to save it.
  ASSERT_TRUE(session.CloseDocument());
  EXPECT_TRUE(prompter.boxes.empty());
}

TEST_F(DocumentSessionTest, AnOpenDocumentIsInUseForOtherProcessesAfterEachSave) {
  std::string path = SavedSample("mine.kpx");
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_EQ(testing::LockInOtherProcess(path), platform::LockResult::kInUse);
  // The save renames a new file into place; the lock must follow it.
  EditFirstRecord("again");
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_EQ(testing::LockInOtherProcess(path), platform::LockResult::kInUse);
  ASSERT_TRUE(session.CloseDocument());
  EXPECT_EQ(testing::LockInOtherProcess(path), platform::LockResult::kLocked);
}

TEST_F(DocumentSessionTest, AWriteCutShortByTheFileSizeLimitKeepsTheOldFile) {
#ifdef _WIN32
  GTEST_SKIP() << "needs fork and RLIMIT_FSIZE";
#else
  std::string path = SavedSample("limited.kpx", NativeFormat::kXml);
  std::string before = ReadFileBytes(path);
  pid_t child = fork();
  if (child == 0) {
    // The child fails its save half-way: writes past the limit give EFBIG, not a signal.
    testing::RecordingPrompter childPrompter;
    SetActivePrompter(&childPrompter);
    Workbook childBook;
    SessionSettings childSettings;
    DocumentSession childSession(childBook, childSettings);
    if (!childSession.OpenDocument(path, DocumentKind::kNative)) _exit(10);
    uint8_t rec[256];
    std::string filler(200, 'z');
    for (uint32_t r = 0; r < 5000; ++r) {
      cell::EncodeText(rec, r, 0, filler);
      if (!childBook.currentSheet->cells.PutCell(rec)) _exit(11);
    }
    childSession.MarkModified(true);
    signal(SIGXFSZ, SIG_IGN);
    struct rlimit limit {};
    limit.rlim_cur = limit.rlim_max = before.size() + 4096;
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(12);
    if (childSession.SaveDocument()) _exit(13);
    if (!childBook.modified || !childSession.HasDocument()) _exit(14);
    if (childPrompter.boxes.size() != 1 ||
        childPrompter.boxes[0].text != ErrorText(err::kFileWrite)) {
      _exit(15);
    }
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(ReadFileBytes(path), before);
  EXPECT_FALSE(platform::FileExists(dir.Path(".limited.kpx.saving")));
#endif
}

TEST_F(DocumentSessionTest, TheWizardMakesTheTableItsFieldsAndTheFile) {
  NewDatabaseAnswers answers;
  answers.tableName = "Contacts";
  answers.fields = {{"Name", FieldType::kText, false, false, ""},
                    {"Age", FieldType::kNumber, false, true, "30"},
                    {"Double", FieldType::kNumber, false, false, "=Age*2"}};
  answers.path = dir.Path("contacts");
  prompter.wizards.push_back(answers);
  ASSERT_TRUE(session.NewDatabase());
  EXPECT_EQ(book.fileName, dir.Path("contacts.kpx"));
  EXPECT_FALSE(book.modified);
  EXPECT_EQ(view.title, "contacts.kpx - Kelpdex");

  Workbook reread;
  NativeFileKind kind;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(ReadDocumentFile(book.fileName, reread, kind, error));
  TableSpec table;
  ASSERT_TRUE(MakeTableSpec(reread, "Contacts", table));
  ASSERT_EQ(FieldCount(table), 3u);
  FieldSpec age;
  ASSERT_TRUE(ReadField(table, 1, age));
  EXPECT_EQ(age.type, FieldType::kNumber);
  EXPECT_EQ(age.formulaOrValue, "V:30");
  FieldSpec twice;
  ASSERT_TRUE(ReadField(table, 2, twice));
  EXPECT_EQ(twice.formulaOrValue, "F:=Age*2");

  // Answers the dialogs would have refused end with their message and no document.
  answers.fields = {{"9lives", FieldType::kText, false, false, ""}};
  answers.path.clear();
  prompter.wizards.push_back(answers);
  EXPECT_FALSE(session.NewDatabase());
  EXPECT_EQ(LastBoxText(), LoadStringText(str::kInvalidFieldName));
  EXPECT_FALSE(session.HasDocument());

  // Cancel in the wizard leaves nothing either.
  EXPECT_FALSE(session.NewDatabase());
  EXPECT_FALSE(session.HasDocument());

  // Without a file page the database waits, unnamed and modified, for its first save.
  answers.fields = {{"Title", FieldType::kText, false, false, ""}};
  prompter.wizards.push_back(answers);
  ASSERT_TRUE(session.NewDatabase());
  EXPECT_TRUE(book.fileName.empty());
  EXPECT_TRUE(book.modified);
}

TEST_F(DocumentSessionTest, ProtectionAsksForTheBinaryFormBeforeSaving) {
  std::string path = SavedSample("guarded.kpx", NativeFormat::kXml);
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  book.protectionMode = 2;
  book.password.Set("secret-word");
  EditFirstRecord("secret");
  std::string before = ReadFileBytes(path);

  prompter.answers = {answer::kCancel};
  EXPECT_FALSE(session.SaveDocument());
  EXPECT_EQ(LastBoxText(), LoadStringText(str::kSwitchToBinary));
  EXPECT_EQ(ReadFileBytes(path), before);
  EXPECT_TRUE(book.modified);

  prompter.answers = {answer::kOk};
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_EQ(book.fileFormat, NativeFormat::kBinary);
  EXPECT_EQ(ReadFileBytes(path)[0], '3');

  // A foreign form cannot carry the protection: the user is told, and the save goes on.
  book.openKind = DocumentKind::kText;
  session.MarkModified(true);
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_EQ(LastBoxText(), LoadStringText(str::kProtectionIgnored));
  EXPECT_EQ(foreign.calls, "write 1 guarded.kpx;");
}

TEST_F(DocumentSessionTest, TheTimerSavesAndClosesAsTheSettingsSay) {
  std::string path = SavedSample("timed.kpx");
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  settings.autoSaveMinutes = 5;
  EditFirstRecord("auto");
  EXPECT_EQ(session.OnTimer(4, 4), TimerAction::kNone);
  EXPECT_TRUE(book.modified);
  EXPECT_EQ(session.OnTimer(5, 0), TimerAction::kSave);
  EXPECT_FALSE(book.modified);

  settings.autoSaveMinutes = 0;
  settings.autoCloseMinutes = 10;
  EditFirstRecord("closing");
  EXPECT_EQ(session.OnTimer(30, 10), TimerAction::kSaveAndClose);
  EXPECT_FALSE(session.HasDocument());
  Workbook reread;
  NativeFileKind kind;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(ReadDocumentFile(path, reread, kind, error));
  EXPECT_EQ(FirstRecordText(reread), "closing");
}

}  // namespace
}  // namespace kelpdex

#include "document/document_session.h"

#include "core/reporting.h"
#include "core/strings.h"
#include "document/document_status.h"
#include "document/exchange_files.h"
#include "document/protection_rules.h"
#include "document/recent_files.h"
#include "exchange/excel_xml.h"
#include "exchange/import_table.h"
#include "exchange/sqlite.h"
#include "format/generic_date.h"
#include "persist/document_file.h"
#include "persist/side_values.h"
#include "search/run_filters.h"
#include "store/catalogue.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

constexpr size_t kUserNameMax = 127;

void ShowLoadError(ErrorCode code, int line) {
  if (IsXmlLineError(code)) {
    ShowErrorAtLine(code, line);
  } else {
    ShowError(code);
  }
}

// The extension a kind's files take when the user typed none.
const char* ExtensionOfKind(DocumentKind kind) {
  switch (kind) {
    case DocumentKind::kNative:
      return ".kpx";
    case DocumentKind::kText:
      return ".txt";
    case DocumentKind::kExcelXml:
      return ".xml";
    case DocumentKind::kDbase3:
    case DocumentKind::kDbase4:
    case DocumentKind::kFoxPro:
    case DocumentKind::kClipper:
      break;
    case DocumentKind::kSqlite:
      return ".sqlite";
  }
  return ".dbf";
}

std::string WithExtension(const std::string& path, DocumentKind kind) {
  if (platform::FileNameOf(path).find('.') != std::string::npos) return path;
  return path + ExtensionOfKind(kind);
}

}  // namespace

bool InsertCheckedField(Workbook& book, const WizardField& field, uint16_t position) {
  TableSpec table;
  if (!CurrentTable(book, table)) {
    ShowError(book.errorCode);
    return false;
  }
  FieldEdit edit;
  edit.name = field.name;
  edit.type = field.type;
  edit.link = field.link;
  edit.isValue = field.isValue;
  edit.formulaOrValue = field.formulaOrValue;
  FieldSpec fieldRow;
  FieldCheck check = CheckField(table, edit, fieldRow);
  if (!check.ok()) {
    AskText(check.Text(), mb::kOk | mb::kIconExclamation);
    return false;
  }
  if (!InsertField(book, position, fieldRow)) {
    ShowError(book.errorCode);
    return false;
  }
  return true;
}

bool InsertCheckedFields(Workbook& book, const std::vector<WizardField>& fields,
                         uint16_t position) {
  TableSpec table;
  if (!CurrentTable(book, table)) {
    ShowError(book.errorCode);
    return false;
  }
  std::vector<FieldEdit> edits(fields.size());
  for (size_t i = 0; i < fields.size(); ++i) {
    edits[i].name = fields[i].name;
    edits[i].type = fields[i].type;
    edits[i].link = fields[i].link;
    edits[i].isValue = fields[i].isValue;
    edits[i].formulaOrValue = fields[i].formulaOrValue;
  }
  std::vector<FieldSpec> fieldRows;
  size_t refused = 0;
  FieldCheck check = CheckNewFields(table, edits, fieldRows, refused);
  // The fields before a refused one go in, as they would one by one.
  fieldRows.resize(refused);
  if (!InsertFields(book, position, fieldRows)) {
    ShowError(book.errorCode);
    return false;
  }
  if (!check.ok()) {
    Ask(check.stringId, mb::kOk | mb::kIconExclamation);
    return false;
  }
  return true;
}

DocumentSession::DocumentSession(Workbook& book, SessionSettings& settings)
    : book_(book), settings_(settings), exchange_(std::make_unique<ExchangeFiles>()) {
  foreign_ = exchange_.get();
  book_.undoLevel = settings_.undoLevel;
}

DocumentSession::~DocumentSession() = default;

void DocumentSession::Cleared() {
  if (view_ != nullptr) view_->DocumentCleared();
  UpdateTitle();
}

void DocumentSession::Shown() {
  if (view_ != nullptr) view_->DocumentShown();
  UpdateTitle();
  UpdateDocumentStatus();
}

void DocumentSession::ResetDocument() {
  lock_.Release();
  unreadBytes_ = 0;
  book_.Clear();
  book_.fileName.clear();
  book_.openKind = DocumentKind::kNative;
  book_.fileFormat = NativeFormat::kDefault;
  book_.textOptions = TextFileOptions();
  book_.protectionMode = 0;
  book_.password.Wipe();
  book_.modified = false;
  book_.sideValuesReplaced = false;
  book_.readOnly = false;
  book_.errorCode = err::kNone;
}

bool DocumentSession::LockForOpen(const std::string& path, bool askReadOnly) {
  switch (lock_.Acquire(path)) {
    case platform::LockResult::kLocked:
      return true;
    case platform::LockResult::kInUse:
      // Another Kelpdex has it: reading is harmless, saving over its work is not.
      if (askReadOnly && !ActivePrompter().OfferReadOnly(path)) return false;
      book_.readOnly = true;
      return true;
    case platform::LockResult::kUnavailable:
      break;
  }
  ShowError(err::kFileOpenRead);
  return false;
}

bool DocumentSession::LoadFile(const std::string& path, DocumentKind openKind, bool reuseOptions) {
  bool readOnly = book_.readOnly;
  bool ok = false;
  int line = 0;
  ErrorCode error = err::kNone;
  NativeFormat format = NativeFormat::kDefault;
  // An .xml file may be a native document as well as a spreadsheet's: its root element tells.
  if (openKind == DocumentKind::kExcelXml && SniffXmlRoot(path) == XmlRoot::kNative) {
    openKind = DocumentKind::kNative;
  }
  // An SQLite database is told by its header, whatever its name.
  if (openKind == DocumentKind::kNative && IsSqliteFile(path)) openKind = DocumentKind::kSqlite;
  if (openKind == DocumentKind::kNative) {
    NativeFileKind kind = NativeFileKind::kNone;
    Password password;
    bool usePassword = false;
    // Cancel in the password dialog ends the open without a message, as a cancelled import does.
    ok =
        AskPasswordForOpen(path, password, usePassword) &&
        ReadDocumentFile(path, book_, kind, error, &line, usePassword ? password.c_str() : nullptr);
    if (ok && kind == NativeFileKind::kEmpty) {
      // An empty file becomes a new database of that name. One that yielded a few bytes may be
      // a cut or foreign file: its bytes are kept until the user agrees to replace them.
      ok = CreateTable(book_, ImportTableName(path));
      error = ok ? err::kNone : book_.errorCode;
      uint64_t size = 0;
      if (!platform::GetFileSize(path, size)) size = 1;
      unreadBytes_ = size;
    } else if (ok) {
      // A save keeps the form the file came in, unless the user picks another.
      format = FormatOfFileKind(kind);
    }
  } else if (foreign_ != nullptr) {
    book_.errorCode = err::kNone;
    // A cancelled import dialog fails without a code: nothing is shown, and no document stays.
    ok = foreign_->Read(openKind, path, book_, reuseOptions);
    if (ok) openKind = foreign_->KindRead(openKind);
    error = book_.errorCode;
    line = foreign_->ErrorLine();
  } else {
    // No reader for this kind is linked into the program.
    error = err::kFileOpenRead;
  }
  if (ok) {
    // The readers build sheets only; the current table's record set is the lifecycle's to make,
    // with the filters it was saved with in force.
    ok = RefreshCurrentTable(book_) && (book_.currentSheet == nullptr || RunSearch(book_));
    if (!ok) error = book_.errorCode;
  }
  if (error != err::kNone) ShowLoadError(error, line);
  if (!ok) {
    ResetDocument();
    return false;
  }
  book_.fileName = path;
  book_.openKind = openKind;
  book_.fileFormat = format;
  // A read-only copy from the file itself, or a file another process holds.
  book_.readOnly = book_.readOnly || readOnly;
  book_.modified = false;
  book_.errorCode = err::kNone;
  if (book_.readOnly) lock_.Release();
  return true;
}

bool DocumentSession::OpenDocument(const std::string& path, DocumentKind openKind) {
  if (HasDocument() && !book_.fileName.empty() && platform::SameFile(path, book_.fileName)) {
    return true;
  }
  if (HasDocument()) {
    if (!AskToSave()) return false;
    ResetDocument();
    Cleared();
  }
  if (platform::FolderExists(path)) {
    ShowError(err::kFolderPath);
    return false;
  }
  if (!LockForOpen(path, true)) {
    ResetDocument();
    return false;
  }
  if (!LoadFile(path, openKind, false)) {
    Cleared();
    return false;
  }
  AddRecentFile(settings_, path);
  if (view_ != nullptr) view_->RecentFilesChanged();
  Shown();
  return true;
}

bool DocumentSession::OpenWithDialog() {
  OpenFileChoice choice;
  choice.path = book_.fileName.empty() ? settings_.startFolder : platform::FolderOf(book_.fileName);
  choice.filter = settings_.openFilter;
  if (!ActivePrompter().ChooseOpenFile(choice) || choice.path.empty()) return false;
  settings_.openFilter = choice.filter;
  return OpenDocument(choice.path, KindOfOpenFilter(choice.filter, choice.path));
}

bool DocumentSession::OpenFromCommandLine(const std::string& path) {
  return OpenDocument(path, GuessFormat(path));
}

bool DocumentSession::OpenRecent(size_t index) {
  if (index >= settings_.recentFiles.size()) return false;
  std::string path = settings_.recentFiles[index];
  return OpenDocument(path, GuessFormat(path));
}

bool DocumentSession::ReloadDocument() {
  if (!HasDocument() || book_.fileName.empty()) return false;
  std::string path = book_.fileName;
  DocumentKind kind = book_.openKind;
  TextFileOptions textOptions = book_.textOptions;
  ResetDocument();
  book_.textOptions = textOptions;
  // The user chose this file already: a file in use is read again read-only, without asking.
  if (!LockForOpen(path, false) || !LoadFile(path, kind, true)) {
    ResetDocument();
    Cleared();
    return false;
  }
  Shown();
  return true;
}

bool DocumentSession::CloseDocument() {
  if (!AskToSave()) return false;
  ResetDocument();
  Cleared();
  return true;
}

bool DocumentSession::AskToSave() {
  if (!HasDocument() || !book_.modified) return true;
  if (!book_.fileName.empty() && book_.readOnly) return true;
  std::string name = book_.fileName.empty() ? std::string(LoadStringText(str::kNewDatabase))
                                            : platform::FileNameOf(book_.fileName);
  int choice =
      AskText(FormatString(str::kSaveChanges, {name}), mb::kYesNoCancel | mb::kIconQuestion);
  if (choice == answer::kCancel) return false;
  if (choice == answer::kYes) return SaveDocument();
  return true;
}

bool DocumentSession::CreateFromWizard(const NewDatabaseAnswers& answers) {
  switch (CheckTableName(book_, answers.tableName)) {
    case TableNameCheck::kOk:
      break;
    case TableNameCheck::kDuplicate:
      Ask(str::kTableExists, mb::kOk | mb::kIconExclamation);
      return false;
    case TableNameCheck::kInvalid:
      Ask(str::kInvalidValue, mb::kOk | mb::kIconExclamation);
      return false;
    case TableNameCheck::kReserved:
      AskText(kReservedTableNameText, mb::kOk | mb::kIconExclamation);
      return false;
  }
  if (!CreateTable(book_, answers.tableName)) {
    ShowError(book_.errorCode);
    return false;
  }
  return InsertCheckedFields(book_, answers.fields, 0);
}

bool DocumentSession::NewDatabase() {
  if (HasDocument()) {
    if (!AskToSave()) return false;
    ResetDocument();
    Cleared();
  }
  if (!book_.records.allocated() && !book_.records.Allocate()) {
    ShowError(err::kOutOfMemory);
    return false;
  }
  book_.records.SetCount(0);
  NewDatabaseAnswers answers;
  if (!ActivePrompter().NewDatabaseWizard(answers)) return false;
  if (!CreateFromWizard(answers)) {
    ResetDocument();
    return false;
  }
  book_.modified = true;
  if (!answers.path.empty()) {
    // The file page names where the database lives from the start; a failed write leaves it
    // open and unnamed, so that nothing typed is lost.
    std::string path = WithExtension(answers.path, DocumentKind::kNative);
    if (WriteDocument(&path, DocumentKind::kNative, book_.fileFormat)) {
      book_.fileName = path;
      book_.modified = false;
      lock_.Acquire(path);
      AddRecentFile(settings_, path);
      if (view_ != nullptr) view_->RecentFilesChanged();
    }
  }
  Shown();
  return true;
}

bool DocumentSession::WriteDocument(const std::string* path, DocumentKind kind,
                                    NativeFormat format) {
  const std::string& target = path != nullptr ? *path : book_.fileName;
  bool ok = false;
  ErrorCode error = err::kNone;
  std::string place;  // the cell an XML form could not hold
  if (platform::FolderExists(target)) {
    ShowError(err::kFolderPath);
    return false;
  }
  if (kind == DocumentKind::kNative) {
    std::string savedBy = book_.lastSavedBy;
    std::string savedAt = book_.lastSavedAt;
    book_.lastSavedBy = platform::UserName();
    if (book_.lastSavedBy.size() > kUserNameMax) book_.lastSavedBy.resize(kUserNameMax);
    book_.lastSavedAt = FormatGenericDate(platform::GetLocalTime());
    // The values waiting in the sheets go to the side file first: the cells must hold their
    // offsets when the document is written.
    PendingFlush flush;
    ok = FlushPendingObjects(book_, SideFilePath(target), flush, error) &&
         WriteDocumentFile(target, book_, EffectiveFormat(format, settings_.defaultFileFormat),
                           error, &place);
    if (!ok) {
      RestorePendingObjects(book_, flush);
      // The file still holds the earlier save, and so does the status line.
      book_.lastSavedBy = savedBy;
      book_.lastSavedAt = savedAt;
    }
  } else if (foreign_ != nullptr) {
    book_.errorCode = err::kNone;
    ok = foreign_->Write(kind, target, book_);
    error = book_.errorCode;
    if (!ok && error == err::kNone) return false;  // the export's dialog was cancelled
  } else {
    error = err::kFileOpenWrite;
  }
  if (!ok) {
    if (error == err::kNone) error = err::kFileWrite;
    if (place.empty()) {
      ShowError(error);
    } else {
      ShowMessage(std::string(ErrorText(error)) + "\n" + place);
    }
    return false;
  }
  // The save put a new file in the old one's place; the lock belongs on the new one.
  if (!book_.readOnly && !book_.fileName.empty() && platform::SameFile(target, book_.fileName)) {
    lock_.Acquire(target);
  }
  return true;
}

bool DocumentSession::SaveDocument() {
  if (!HasDocument()) return false;
  if (book_.fileName.empty()) return SaveDocumentAs();
  if (book_.readOnly) {
    UpdateTitle();
    return false;
  }
  if (!ConfirmProtectedSave(book_, settings_.defaultFileFormat, book_.openKind)) return false;
  if (unreadBytes_ != 0) {
    std::string question = "The file " + platform::FileNameOf(book_.fileName) + " held " +
                           std::to_string(unreadBytes_) +
                           " bytes but no database, and this new database was made in its place."
                           "\nReplace the file's contents with this database?";
    if (AskText(question, mb::kYesNo | mb::kIconExclamation | mb::kDefaultButton2) !=
        answer::kYes) {
      return false;
    }
  }
  if (!WriteDocument(nullptr, book_.openKind, book_.fileFormat)) return false;
  unreadBytes_ = 0;
  MarkModified(false);
  UpdateDocumentStatus();
  return true;
}

bool DocumentSession::SaveDocumentAs() {
  if (!HasDocument()) return false;
  SaveFileChoice choice;
  choice.path = book_.fileName;
  if (choice.path.empty()) {
    std::string name = std::string(LoadStringText(str::kNewDatabase)) + ".kpx";
    choice.path =
        settings_.startFolder.empty() ? name : platform::JoinPath(settings_.startFolder, name);
  }
  choice.filter = book_.fileName.empty() ? settings_.saveFilter : SaveFilterOfKind(book_.openKind);
  if (!ActivePrompter().ChooseSaveFile(choice) || choice.path.empty()) return false;
  settings_.saveFilter = choice.filter;
  DocumentKind kind = KindOfSaveFilter(choice.filter);
  std::string path = WithExtension(choice.path, kind);
  if (!book_.fileName.empty() && platform::SameFile(path, book_.fileName)) {
    book_.openKind = kind;
    return SaveDocument();
  }
  // Saving over a document that another Kelpdex has open would pull it from under that user.
  platform::FileLock target;
  if (platform::FileExists(path) && target.Acquire(path) == platform::LockResult::kInUse) {
    ShowError(err::kFileInUse);
    return false;
  }
  target.Release();
  if (!ConfirmProtectedSave(book_, settings_.defaultFileFormat, kind)) return false;
  // The long texts and files go with the document: its cells point into the side file.
  if (!book_.fileName.empty()) {
    std::string side = SideFilePath(book_.fileName);
    if (platform::FileExists(side) && !platform::CopyFile(side, SideFilePath(path), false)) {
      ShowSystemError(SideFilePath(path));
      return false;
    }
  }
  if (!WriteDocument(&path, kind, book_.fileFormat)) return false;
  book_.fileName = path;
  book_.openKind = kind;
  unreadBytes_ = 0;
  // The copy under the new name is the user's own, whatever kept the old one read-only.
  book_.readOnly = false;
  lock_.Acquire(path);
  AddRecentFile(settings_, path);
  if (view_ != nullptr) view_->RecentFilesChanged();
  MarkModified(false);
  UpdateDocumentStatus();
  return true;
}

void DocumentSession::MarkModified(bool modified) {
  book_.modified = modified;
  UpdateTitle();
}

void DocumentSession::SetFileFormat(NativeFormat format) {
  if (format != NativeFormat::kDefault && !IsWritableFormat(format)) return;
  book_.fileFormat = format;
  UpdateDocumentStatus();
}

std::string DocumentSession::WindowTitle() const {
  return kelpdex::WindowTitle(book_, HasDocument());
}

std::string DocumentSession::StatusText() const {
  if (!HasDocument()) return std::string();
  return DocumentStatusText(book_, settings_.defaultFileFormat, MeasureDocument(book_.fileName),
                            currentLocale);
}

void DocumentSession::UpdateTitle() {
  if (view_ != nullptr) view_->TitleChanged(WindowTitle());
}

void DocumentSession::UpdateDocumentStatus() {
  if (view_ != nullptr) view_->StatusChanged(StatusText());
}

TimerAction DocumentSession::OnTimer(double minutesSinceSave, double minutesIdle) {
  if (!HasDocument()) return TimerAction::kNone;
  // A read-only document cannot be saved, so to the timer it is one without a file: its changes
  // are never closed away.
  bool canSave = !book_.fileName.empty() && !book_.readOnly;
  TimerAction action =
      AutoTimerAction(settings_, book_.modified, canSave, minutesSinceSave, minutesIdle);
  bool saved = true;
  if (action == TimerAction::kSave || action == TimerAction::kSaveAndClose) {
    saved = SaveDocument();
  }
  if (saved && (action == TimerAction::kClose || action == TimerAction::kSaveAndClose)) {
    ResetDocument();
    Cleared();
  }
  return action;
}

}  // namespace kelpdex

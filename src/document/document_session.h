// The life of the one open document: New, Open, Reload, Close, Save and Save As, the question
// whether to save changes, read-only handling, and what the frame shows about the document. Every
// question goes through the active Prompter; every failure is shown once, here.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/document_kind.h"
#include "core/prompter.h"
#include "core/session_settings.h"
#include "platform/os.h"
#include "store/workbook.h"

namespace kelpdex {

// The frame's side of the document: what it must redraw when the document changes.
class DocumentView {
 public:
  virtual ~DocumentView() = default;
  virtual void TitleChanged(const std::string& /*title*/) {}
  virtual void StatusChanged(const std::string& /*status*/) {}
  // A document was opened or made: rebuild the panes and show the first table.
  virtual void DocumentShown() {}
  // The document went: clear the panes and leave an empty frame.
  virtual void DocumentCleared() {}
  virtual void RecentFilesChanged() {}
};

// The readers and writers of foreign files (text, Excel 2003 XML, xBase), which show their own
// option dialogs through the Prompter. `reuseOptions` is set by Reload: the options of the last
// import apply again and no dialog is shown.
class ForeignFiles {
 public:
  virtual ~ForeignFiles() = default;
  virtual bool Read(DocumentKind openKind, const std::string& path, Workbook& book,
                    bool reuseOptions) = 0;
  virtual bool Write(DocumentKind openKind, const std::string& path, const Workbook& book) = 0;
  // The line of the file a failed Read stopped at, for the XML codes; 0 when none.
  virtual int ErrorLine() const { return 0; }
  // The kind a successful Read found the file to be, which a save then writes; `asked` unless
  // the file said otherwise.
  virtual DocumentKind KindRead(DocumentKind asked) const { return asked; }
};

// Runs the field dialog's checks on a field given as the wizard's texts and inserts it at
// `position` of the current table. A refusal shows the dialog's message; a failure its code.
bool InsertCheckedField(Workbook& book, const WizardField& field, uint16_t position);
// The same for several fields inserted one after another from `position`, as the wizard's list
// gives them, in time that grows with their number alone. A refusal stops at that field.
bool InsertCheckedFields(Workbook& book, const std::vector<WizardField>& fields, uint16_t position);

class ExchangeFiles;

class DocumentSession {
 public:
  // Text and xBase files go through an ExchangeFiles of the session's own until another
  // ForeignFiles is set.
  DocumentSession(Workbook& book, SessionSettings& settings);
  ~DocumentSession();
  DocumentSession(const DocumentSession&) = delete;
  DocumentSession& operator=(const DocumentSession&) = delete;

  void SetView(DocumentView* view) { view_ = view; }
  void SetForeignFiles(ForeignFiles* foreign) { foreign_ = foreign; }
  // The session's own reader and writer of foreign files, with the options of the last import.
  ExchangeFiles& exchangeFiles() { return *exchange_; }

  Workbook& book() { return book_; }
  bool HasDocument() const { return book_.firstNode != nullptr; }
  // The document's file was not empty but too short to be one: the new database made in its
  // place does not replace those bytes unless the user says so at the save.
  bool FileHeldNoDocument() const { return unreadBytes_ != 0; }

  // Opens a file as `openKind` says. Opening the document that is open does nothing and returns
  // true. A failure is shown and leaves no document.
  bool OpenDocument(const std::string& path, DocumentKind openKind);
  // The Open command: the file and its kind come from the Open dialog.
  bool OpenWithDialog();
  // The process's command line: the kind follows the extension.
  bool OpenFromCommandLine(const std::string& path);
  bool OpenRecent(size_t index);
  // Reads the document's file again, discarding changes without asking.
  bool ReloadDocument();
  // False when the user cancelled.
  bool CloseDocument();
  // Whether the document may go: true when it is saved, unchanged, read-only or the user said No.
  bool AskToSave();
  bool NewDatabase();
  bool SaveDocument();
  bool SaveDocumentAs();
  // Writes the document to `path`, or to its own file when `path` is null, as `kind` and
  // `format` say (kDefault: the session's default form). Shows a failure.
  bool WriteDocument(const std::string* path, DocumentKind kind, NativeFormat format);
  // Drops everything of the document, and the lock on its file.
  void ResetDocument();
  // The Compact command: rewrites the side file without the records of replaced values, saving
  // the document before and after, and tells the user the outcome.
  enum class Compaction { kCompacted, kNotNeeded, kFailed };
  Compaction CompactDatabase();

  void MarkModified(bool modified);
  // The File Format menu: one of the four forms, or kDefault.
  void SetFileFormat(NativeFormat format);

  std::string WindowTitle() const;
  std::string StatusText() const;
  void UpdateTitle();
  void UpdateDocumentStatus();

  // What the frame's timer calls: saves and closes as the AutoSave and AutoClose settings say.
  TimerAction OnTimer(double minutesSinceSave, double minutesIdle);

 private:
  // The part of an open that reads: the lock is taken and the book is empty.
  bool LoadFile(const std::string& path, DocumentKind openKind, bool reuseOptions);
  // Takes the lock on a file. False when the user refused the read-only offer or the file cannot
  // be opened; the error is shown.
  bool LockForOpen(const std::string& path, bool askReadOnly);
  bool CreateFromWizard(const NewDatabaseAnswers& answers);
  void Cleared();
  void Shown();

  Workbook& book_;
  SessionSettings& settings_;
  DocumentView* view_ = nullptr;
  std::unique_ptr<ExchangeFiles> exchange_;
  ForeignFiles* foreign_ = nullptr;
  platform::FileLock lock_;
  // The size of the document's file when it held bytes but no document; 0 otherwise.
  uint64_t unreadBytes_ = 0;
};

}  // namespace kelpdex

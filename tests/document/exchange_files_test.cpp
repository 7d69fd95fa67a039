#include "document/exchange_files.h"

#include <gtest/gtest.h>

#include <string>

#include "document/document_session.h"
#include "support/recording_prompter.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

// One record of one text field "NAME", under the given version byte.
std::string OneRecordDbf(uint8_t version) {
  std::string bytes(32, '\0');
  bytes[0] = static_cast<char>(version);
  bytes[1] = 126;
  bytes[2] = 11;
  bytes[3] = 24;
  bytes[4] = 1;       // one record
  bytes[8] = 65;      // header: 32 + one descriptor + its end mark
  bytes[10] = 1 + 5;  // delete flag and the field
  std::string field(32, '\0');
  field.replace(0, 4, "NAME");
  field[11] = 'C';
  field[16] = 5;
  return bytes + field + "\r" + " Ann  " + "\x1a";
}

// The file's own header decides the dialect a later save writes, whatever filter opened it.
TEST(ExchangeFilesTest, AnXbaseFileKeepsTheDialectItsHeaderNames) {
  testing::TempDir dir;
  testing::RecordingPrompter prompter;
  testing::ScopedPrompter scope(prompter);
  Workbook book;
  SessionSettings settings;
  DocumentSession session(book, settings);
  std::string dbase4 = dir.Write("four.dbf", OneRecordDbf(0x8B));
  ASSERT_TRUE(session.OpenDocument(dbase4, DocumentKind::kDbase3));
  EXPECT_EQ(book.openKind, DocumentKind::kDbase4);
  // A version byte several dialects share leaves the choice the user made.
  std::string plain = dir.Write("plain.dbf", OneRecordDbf(0x03));
  ASSERT_TRUE(session.OpenDocument(plain, DocumentKind::kFoxPro));
  EXPECT_EQ(book.openKind, DocumentKind::kFoxPro);
}

}  // namespace
}  // namespace kelpdex

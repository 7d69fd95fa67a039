#include "document/external_documents.h"

#include <string>

#include <gtest/gtest.h>

#include "functions/function_table.h"
#include "persist/document_file.h"
#include "store/catalogue.h"
#include "store/workbook.h"
#include "support/formula_sheet.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

class ExternalDocumentsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // The other document: a folder "prices" with a sheet "list" whose first cells hold 42 and
    // "far", written as a real file beside the referring one.
    Workbook other;
    ASSERT_TRUE(CreateTable(other, "T"));
    auto* folder = new Folder("prices");
    other.AttachNode(folder, nullptr);
    auto* sheet = new Worksheet("list");
    other.AttachNode(sheet, folder);
    uint8_t record[64];
    cell::EncodeNumber(record, 0, 0, 42);
    ASSERT_TRUE(sheet->cells.PutCell(record));
    cell::EncodeText(record, 0, 1, "far");
    ASSERT_TRUE(sheet->cells.PutCell(record));
    ErrorCode error = err::kNone;
    ASSERT_TRUE(WriteDocumentFile(dir_.Path("other.kpx"), other, NativeFormat::kBinary, error));
    dir_.Write("empty.kpx", "");
    t_.book.fileName = dir_.Path("mine.kpx");
    InstallExternalDocuments();
  }
  void TearDown() override { SetExternalDocuments(nullptr); }

  testing::TempDir dir_;
  testing::FormulaSheet t_{{{"Price", kFieldNumber}, {"Name", kFieldText}}, &BuiltinFunctions()};
};

TEST_F(ExternalDocumentsTest, ReadsTheFileBesideTheDocument) {
  EXPECT_EQ(t_.Eval("='[other.kpx]\\prices\\list'!Price"), "42");
  EXPECT_EQ(t_.Eval("='[other]\\prices\\list'!Name"), "far");  // the extension is supplied
  EXPECT_EQ(t_.Eval("='[" + dir_.Path("other.kpx") + "]\\prices\\list'!Price+1"), "43");
  EXPECT_EQ(t_.Eval("=index('[other.kpx]\\prices\\list'!Price:Name, 1, 2)"), "far");
  EXPECT_EQ(t_.Eval("=sum('[other.kpx]\\prices'!Price)"), "42");  // a folder stacks its sheets
}

TEST_F(ExternalDocumentsTest, WhatCannotBeReadIsRef) {
  EXPECT_EQ(t_.Eval("='[missing.kpx]\\prices\\list'!Price"), "#REF!");
  EXPECT_EQ(t_.Eval("='[empty.kpx]\\prices\\list'!Price"), "#REF!");
  EXPECT_EQ(t_.Eval("='[other.kpx]\\prices\\nope'!Price"), "#REF!");
  // Relative to the referring document, not to the working folder.
  dir_.Write("sub/note.txt", "");
  t_.book.fileName = dir_.Path("sub/mine.kpx");
  EXPECT_EQ(t_.Eval("='[other.kpx]\\prices\\list'!Price"), "#REF!");
  EXPECT_EQ(t_.Eval("='[../other.kpx]\\prices\\list'!Price"), "42");
}

}  // namespace
}  // namespace kelpdex

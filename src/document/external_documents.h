// Other documents that formulas read through "[file]path!reference": opened read-only from disk,
// by the native readers.
#pragma once

#include <memory>
#include <string>

#include "formula/formula_engine.h"

namespace kelpdex {

class NativeExternalDocuments : public ExternalDocuments {
 public:
  // A relative `file` is taken from the folder of `referrer`, or from the working folder for a
  // document that has no file yet. The name is tried as written, then with ".kpx" behind it. A
  // file that is missing, empty, protected by a password or unreadable gives nullptr.
  std::unique_ptr<Workbook> Open(const std::string& file, const std::string& referrer) override;
};

// Makes the formula engines of this process read other documents from disk. Both programs call it
// once at start; without it such references answer "#REF!".
void InstallExternalDocuments();

}  // namespace kelpdex

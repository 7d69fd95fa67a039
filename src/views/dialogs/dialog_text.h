// The dialogs show the document's code page text through Qt's Unicode strings.
#pragma once

#include <QString>
#include <string>
#include <string_view>

#include "text/utf8.h"

namespace kelpdex::views {

inline QString FromCodePage(std::string_view codePage) {
  return QString::fromUtf8(text::Cp1252ToUtf8(codePage));
}
inline std::string ToCodePage(const QString& text) {
  return text::Utf8ToCp1252(text.toStdString());
}

}  // namespace kelpdex::views

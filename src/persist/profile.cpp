#include "persist/profile.h"

#include <cstdio>
#include <cstring>

#include "persist/file_stream.h"
#include "persist/xml_scanner.h"
#include "persist/xml_writer.h"
#include "text/base64.h"

namespace kelpdex {

namespace {

constexpr ScanFlags kOptionalOpen = scan::kOpen | scan::kAttributes | scan::kOptional;

std::string Number(int64_t value) {
  return std::to_string(value);
}

}  // namespace

bool SaveProfile(const std::string& path, const SessionSettings& s, const UserFormatList& formats,
                 ErrorCode& error) {
  FileStream stream;
  if (!stream.Open(path, StreamMode::kWrite, false)) {
    error = stream.error();
    return false;
  }
  XmlWriter w(stream);
  w.Prolog();
  XmlAttributes root;
  root.Text("MD5", "").Text("ReadOnly", s.profileReadOnly ? "Yes" : "No");
  w.Tag("Profile", root, TagMode::kOpen, 0, 1);
  w.TextElement("UndoLevel", Number(s.undoLevel), 1, 1);
  XmlAttributes window;
  if (s.windowShow == show::kMaximized) {
    window.Text("Position", "Maximize");
  } else if (s.windowShow == show::kMinimize) {
    window.Text("Position", "Minimize");
  } else {
    char position[64];
    std::snprintf(position, sizeof position, "%d %d %d %d", s.windowLeft, s.windowTop,
                  s.windowRight, s.windowBottom);
    window.Text("Position", position);
  }
  w.Tag("ApplicationWindow", window, TagMode::kEmpty, 1, 1);
  w.TextElement("WrapTextInMemoFields", Number(s.wrapTextInMemoFields), 1, 1);
  w.TextElement("DisplayThumbnails", Number(s.displayThumbnails), 1, 1);
  w.TextElement("PlainTextInMemoFields", Number(s.plainTextInMemoFields), 1, 1);
  w.TextElement("DisplayImageLabels", Number(s.displayImageLabels), 1, 1);
  w.TextElement("WhenEnterPressed", Number(s.whenEnterPressed), 1, 1);
  w.TextElement("Opacity", Number(s.opacity), 1, 1);
  w.TextElement("AutoSave", Number(s.autoSaveMinutes), 1, 1);
  w.TextElement("AutoClose", Number(s.autoCloseMinutes), 1, 1);
  // The default format's two bits: XML or binary, compressed or not.
  NativeFormat format = WritableFormat(s.defaultFileFormat);
  XmlAttributes fileFormat;
  fileFormat.Text("Xml", IsXmlFormat(format) ? "Yes" : "No")
      .Text("Compressed", IsCompressedFormat(format) ? "Yes" : "No");
  w.Tag("FileFormat", fileFormat, TagMode::kEmpty, 1, 1);
  XmlAttributes locales;
  locales.Int("Region", s.localeChoice);
  w.Tag("Locales", locales, TagMode::kEmpty, 1, 1);
  w.TextElement("Folder", s.startFolder, 1, 1);
  XmlAttributes font;
  font.Text("Name", s.fontName);
  if (s.fontColourSet) font.Colour("Color", s.fontColour, HexCase::kUpper);
  w.Tag("Font", font, TagMode::kEmpty, 1, 1);

  w.Tag("MailSettings", TagMode::kOpen, 1, 1);
  w.TextElement("SenderName", s.senderName, 2, 1);
  w.TextElement("SenderAddress", s.senderAddress, 2, 1);
  XmlAttributes port;
  port.Int("Port", s.smtpPort);
  w.TextElement("SMTPServer", port, s.smtpServer, 2, 1);
  // Base64 only keeps the bytes printable: it protects nothing.
  XmlAttributes authentication;
  authentication.Text("User", text::Base64Encode(s.mailUser));
  if (s.mailPasswordStored) authentication.Text("Password", text::Base64Encode(s.mailPassword));
  w.Tag("Authentication", authentication, TagMode::kEmpty, 2, 1);
  w.Tag("MailSettings", TagMode::kClose, 1, 1);

  for (size_t i = formats.builtInCount(); i < formats.size(); ++i) {
    w.Tag("UserNumericFormat", TagMode::kOpen, 1, 1);
    w.TextElement("Name", formats.nameAt(i), 2, 1);
    w.TextElement("Pattern", formats.at(i), 2, 1);
    w.Tag("UserNumericFormat", TagMode::kClose, 1, 1);
  }
  for (const std::string& file : s.recentFiles) w.TextElement("RecentFile", file, 1, 1);
  w.Tag("Profile", TagMode::kClose, 0, 1);
  stream.Flush();
  bool ok = stream.Close();
  error = stream.error();
  return ok;
}

bool LoadProfile(const std::string& path, SessionSettings& s, UserFormatList& formats,
                 ErrorCode& error, int* line) {
  FileStream stream;
  if (!stream.Open(path, StreamMode::kRead, true)) {
    error = stream.error();
    return false;
  }
  XmlScanner x(stream);
  auto number = [&](const char* name, int32_t& value, int32_t min, int32_t max) {
    if (!x.Text(name, 16, scan::kOptional)) return x.ok();
    std::string_view t = x.text();
    int64_t v = 0;
    bool negative = !t.empty() && t[0] == '-';
    size_t i = negative ? 1 : 0;
    if (i == t.size()) return x.Fail(err::kXmlInvalidData);
    for (; i < t.size(); ++i) {
      if (t[i] < '0' || t[i] > '9' || v > 100000000) return x.Fail(err::kXmlInvalidData);
      v = v * 10 + (t[i] - '0');
    }
    if (negative) v = -v;
    if (v < min || v > max) return x.Fail(err::kXmlInvalidData);
    value = static_cast<int32_t>(v);
    return true;
  };
  auto flag = [&](const char* name, bool& value) {
    int32_t v = value;
    if (!number(name, v, 0, 1)) return false;
    value = v != 0;
    return true;
  };
  auto text = [&](const char* name, std::string& value, size_t max, ScanFlags flags) {
    if (!x.Text(name, max, scan::kOptional | flags)) return x.ok();
    value.assign(x.text());
    return true;
  };
  bool ok = x.Prolog() && x.Tag("Profile", scan::kOpen | scan::kAttributes);
  if (ok) {
    if (const char* readOnly = x.Attr("ReadOnly")) {
      s.profileReadOnly = std::strcmp(readOnly, "Yes") == 0;
    }
    ok = number("UndoLevel", s.undoLevel, 0, 99);
  }
  if (ok && x.Tag("ApplicationWindow", kOptionalOpen)) {
    if (const char* position = x.Attr("Position")) {
      if (std::strcmp(position, "Maximize") == 0) {
        s.windowShow = show::kMaximized;
      } else if (std::strcmp(position, "Minimize") == 0) {
        s.windowShow = show::kMinimize;
      } else {
        int left, top, right, bottom;
        if (std::sscanf(position, "%d%d%d%d", &left, &top, &right, &bottom) != 4) {
          ok = x.Fail(err::kXmlInvalidAttribute);
        } else {
          s.windowLeft = left;
          s.windowTop = top;
          s.windowRight = right;
          s.windowBottom = bottom;
          s.windowShow = show::kNormal;
        }
      }
    }
    ok = ok && (x.isClose() || x.Tag("ApplicationWindow", scan::kClose));
  }
  ok = ok && x.ok() && flag("WrapTextInMemoFields", s.wrapTextInMemoFields) &&
       flag("DisplayThumbnails", s.displayThumbnails) &&
       flag("PlainTextInMemoFields", s.plainTextInMemoFields) &&
       flag("DisplayImageLabels", s.displayImageLabels) &&
       number("WhenEnterPressed", s.whenEnterPressed, 0, 4) &&
       number("Opacity", s.opacity, 0, 100) && number("AutoSave", s.autoSaveMinutes, 0, 100000) &&
       number("AutoClose", s.autoCloseMinutes, 0, 100000);
  if (ok && x.Tag("FileFormat", kOptionalOpen)) {
    bool xml = true, compressed = false;
    ok = x.BoolAttr("Xml", xml) && x.BoolAttr("Compressed", compressed) &&
         (x.isClose() || x.Tag("FileFormat", scan::kClose));
    if (ok) s.defaultFileFormat = NativeFormatOf(xml, compressed);
  }
  if (ok && x.ok() && x.Tag("Locales", kOptionalOpen)) {
    int region = s.localeChoice;
    ok = x.IntAttr("Region", region, 0, 255) && (x.isClose() || x.Tag("Locales", scan::kClose));
    if (ok) s.localeChoice = static_cast<uint8_t>(region);
  }
  ok = ok && x.ok() && text("Folder", s.startFolder, 1024, 0);
  if (ok && x.Tag("Font", kOptionalOpen)) {
    if (const char* name = x.Attr("Name")) s.fontName = name;
    if (x.Attr("Color") != nullptr) {
      ok = x.ColourAttr("Color", s.fontColour);
      s.fontColourSet = ok;
    }
    ok = ok && (x.isClose() || x.Tag("Font", scan::kClose));
  }
  if (ok && x.ok() && x.Tag("MailSettings", scan::kOpen | scan::kOptional) && !x.isClose()) {
    ok = text("SenderName", s.senderName, 1024, 0) &&
         text("SenderAddress", s.senderAddress, 1024, 0);
    if (ok && x.Text("SMTPServer", 1024, scan::kOptional | scan::kAttributes)) {
      s.smtpServer.assign(x.text());
      ok = x.IntAttr("Port", s.smtpPort, 0, 65534);
    }
    if (ok && x.ok() && x.Tag("Authentication", kOptionalOpen)) {
      std::string user, password;
      const char* u = x.Attr("User");
      const char* p = x.Attr("Password");
      if ((u != nullptr && !text::Base64Decode(u, user)) ||
          (p != nullptr && !text::Base64Decode(p, password))) {
        ok = x.Fail(err::kXmlInvalidAttribute);
      } else {
        s.mailUser = user;
        s.mailPassword = password;
        s.mailPasswordStored = p != nullptr;
      }
      ok = ok && (x.isClose() || x.Tag("Authentication", scan::kClose));
    }
    ok = ok && x.ok() && x.Tag("MailSettings", scan::kClose);
  }
  while (ok && x.ok() && x.Tag("UserNumericFormat", scan::kOpen | scan::kOptional)) {
    std::string name, pattern;
    ok = text("Name", name, 1024, 0) && text("Pattern", pattern, 1024, 0) &&
         x.Tag("UserNumericFormat", scan::kClose);
    // A pattern this build does not accept is passed over rather than failing the profile.
    if (ok && !pattern.empty()) formats.Add(pattern, name);
  }
  if (ok && x.ok()) {
    std::vector<std::string> recent;
    std::string file;
    while (x.Text("RecentFile", 1024, scan::kOptional)) recent.emplace_back(x.text());
    if (x.ok()) s.recentFiles = std::move(recent);
  }
  // An element out of order is still standing here: the closing tag is not what comes next.
  ok = ok && x.ok() && x.Tag("Profile", scan::kClose);
  error = stream.error() != err::kNone ? stream.error()
                                       : (ok ? err::kNone : err::kXmlUnexpectedElement);
  if (line != nullptr) *line = ok ? 0 : (x.errorLine() != 0 ? x.errorLine() : x.line());
  return ok;
}

}  // namespace kelpdex

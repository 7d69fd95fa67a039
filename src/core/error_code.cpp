#include "core/error_code.h"

namespace kelpdex {

namespace {

struct ErrorEntry {
  ErrorCode code;
  const char* text;
};

// The texts are shown to users exactly as they stand, spelling included.
constexpr ErrorEntry kErrorTable[] = {
    {1, "Out of memory while loading an image"},
    {2, "Too many images in one document"},
    {3, "An unsupported image source (protocol)"},
    {4, "An unsupported image format"},
    {10, "Out of memory while allocating container data"},
    {11, "Can't find the specified image on the image list"},
    {12, "There can be max. 255 objects in one container"},
    {21, "Out of memory"},
    {22, "A database must contain at least one table"},
    {23, "An invalid worksheet/folder path - not found"},
    {24, "An invalid cache index"},
    {25, "No table selected"},
    {26, "Too many styles in one document"},
    {27, "Too many drop-down lists in one document"},
    {28, "No pages to print"},
    {29, "An invalid print page range"},
    {30, "The zoom factor is too small"},
    {31, "The current margin(s) is smaller than the min. margin of the printer"},
    {32, "No printer selected."},
    {33, "An invalid binary file format"},
    {34, "Not enought empty columns to the right of the last non-empty column"},
    {35, "Not enought empty rows below the last row non-empty row"},
    {36, "Can't generate the cryptographic key"},
    {37, "Invalid password"},
    {38, "Can't open the Clipboard"},
    {42, "Too many records."},
    {43, "Too many sort keys"},
    {44, "Missing or invalid database specification."},
    {45,
     "Missing or invalid database specification.\nExcel XML files must contain worksheets "
     "organized in the structure required by Kelpdex.\nPlease refer to the \"Excel XML files\" "
     "help topic."},
    {46, "No labels defined. You must define some label format first."},
    {50, "Out of memory while creating chart data"},
    {51, "An array formula is required to generate a chart data series"},
    {52,
     "Data series using any of the 'stacked' view types must use the same axis scale and data "
     "range.\n\nCheck the 'Data' and 'Axes' property pages to see whether those parameters are the "
     "same."},
    {53, "Invalid numbers while calculating axis limits"},
    {54, "Too many chart axes"},
    {55, "Too many chart series"},
    {56, "Too many user gridlines"},
    {60, "Can't open the specified file for reading"},
    {61, "Can't create or open the specified file for writing"},
    {62, "Error while closing the specified file"},
    {63, "Error while repositioning a file pointer"},
    {64, "Error while reading from a file"},
    {65, "Error while writing to a file"},
    {66, "Error while deleting a file"},
    {67, "Error while checking the file size/info"},
    {68, "Error while allocating a file read/write buffer"},
    {69, "Can't open the specified file. File in use."},
    {70, "Error while decrypting a file"},
    {71, "Error while encrypting a file"},
    {72, "Error while reading binary fields: the file might be corrupted."},
    {73, "Can't use a folder path. A file path is required."},
    {74,
     "The file containing \"Long Text\" and \"Images/Files\" fields exceeded 2GB limit.\nPlease "
     "split your database or try compacting it."},
    {80, "Out of memory while processing image data"},
    {81, "Can't find or load the ijl15.dll library"},
    {82, "Can't initialize the ijl15.dll library"},
    {83, "Error while reading a JPEG image"},
    {84, "Error while writing a JPEG image"},
    {85, "An unrecognized number of channels in the jpeg image"},
    {86, "An invalid bitmap file"},
    {87, "Error while reading a PNG image"},
    {88, "Error while writing a PNG image"},
    {90, "Ouf of memory while loading an xml document"},
    {91, "An unexpected xml element"},
    {92, "An invalid attribute value"},
    {93, "A required attribute is missing"},
    {94, "Invalid xml element data (c_data)"},
    {95, "Only the UTF-8 encoding is supported"},
    {100, "Too many database fields - max. record size = 64K"},
};

}  // namespace

const char* ErrorText(ErrorCode code) {
  // A direct index built once: codes are a byte, and a miss must cost nothing.
  static const auto index = [] {
    struct Index {
      const char* text[256];
    } built{};
    for (const ErrorEntry& e : kErrorTable) built.text[e.code] = e.text;
    return built;
  }();
  const char* text = index.text[code];
  return text != nullptr ? text : "No error";
}

}  // namespace kelpdex

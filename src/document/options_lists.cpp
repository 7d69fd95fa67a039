#include "document/options_lists.h"

#include <algorithm>

namespace kelpdex {

namespace {

// Steps short enough to guard typing in progress, long enough not to interrupt it.
constexpr int32_t kMinuteSteps[] = {0, 1, 2, 3, 5, 10, 15, 20, 30, 45, 60, 90, 120};

}  // namespace

const char* const kEnterActionTexts[5] = {
    "(No action)",
    "Move down by one record",
    "Move down to the next non-empty field",
    "Move right by one field",
    "Move right to the next non-empty field",
};

const char* const kFileFormatTexts[4] = {
    "XML",
    "XML compressed (gzipped)",
    "Binary",
    "Binary compressed (gzipped)",
};

std::vector<int32_t> MinuteChoices(int32_t current) {
  std::vector<int32_t> choices(std::begin(kMinuteSteps), std::end(kMinuteSteps));
  if (current > 0 && !std::binary_search(choices.begin(), choices.end(), current)) {
    choices.insert(std::upper_bound(choices.begin(), choices.end(), current), current);
  }
  return choices;
}

std::string MinutesText(int32_t minutes, bool inactivity) {
  if (minutes <= 0) return "Never";
  std::string text = "After " + std::to_string(minutes) + " " + (minutes == 1 ? "min" : "mins");
  if (inactivity) text += " (of inactivity)";
  return text;
}

int FileFormatIndex(NativeFormat format) {
  return format == NativeFormat::kDefault ? 0 : static_cast<int>(format) - 1;
}

NativeFormat FileFormatOfIndex(int index) {
  return static_cast<NativeFormat>(std::clamp(index, 0, 3) + 1);
}

}  // namespace kelpdex

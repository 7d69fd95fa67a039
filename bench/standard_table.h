// The benchmark's standard table: 8 fields of names, places, dates and amounts drawn from fixed
// lists with a fixed seed, so every run and every tool sees the same data.
#pragma once

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

#include "store/cell_store.h"

namespace kelpdex::bench {

constexpr int kStandardFieldCount = 8;
constexpr const char* kStandardFieldNames[kStandardFieldCount] = {
    "Id", "LastName", "FirstName", "City", "Birth", "Salary", "Quantity", "Note"};
// Whether each field holds a number.
constexpr bool kStandardFieldIsNumber[kStandardFieldCount] = {true,  false, false, false,
                                                              false, true,  true,  false};

struct StandardRecord {
  double id;
  std::string lastName;
  std::string firstName;
  std::string city;
  std::string birth;  // a generic date, "1975-04-23"
  double salary;      // two decimals
  double quantity;
  std::string note;  // 10 to 60 characters
};

class StandardTableGenerator {
 public:
  explicit StandardTableGenerator(uint32_t seed = 20061) : rng_(seed) {}

  void Next(uint32_t index, StandardRecord& r) {
    static const char* kLast[] = {
        "Smith",    "Johnson",   "Williams", "Brown",     "Jones",   "Garcia",   "Miller",
        "Davis",    "Rodriguez", "Martinez", "Hernandez", "Lopez",   "Gonzalez", "Wilson",
        "Anderson", "Thomas",    "Taylor",   "Moore",     "Jackson", "Martin",   "Lee",
        "Perez",    "Thompson",  "White",    "Harris",    "Sanchez", "Clark",    "Ramirez",
        "Lewis",    "Robinson",  "Walker",   "Young"};
    static const char* kFirst[] = {"James",   "Mary",  "Robert", "Patricia",  "John",    "Jennifer",
                                   "Michael", "Linda", "David",  "Elizabeth", "William", "Barbara",
                                   "Richard", "Susan", "Joseph", "Jessica",   "Thomas",  "Sarah",
                                   "Charles", "Karen", "Anna",   "Eva",       "Lukas",   "Sofia"};
    static const char* kCity[] = {
        "Amsterdam", "Berlin", "Lisbon", "Madrid", "Oslo",     "Paris",  "Prague",   "Rome",
        "Vienna",    "Warsaw", "Dublin", "Zurich", "Helsinki", "Athens", "Budapest", "Copenhagen"};
    static const char kWords[] =
        "lorem ipsum dolor sit amet consectetur adipiscing elit sed do "
        "eiusmod tempor incididunt ut labore et dolore magna aliqua";
    r.id = index + 1;
    r.lastName = kLast[rng_() % (sizeof kLast / sizeof *kLast)];
    r.firstName = kFirst[rng_() % (sizeof kFirst / sizeof *kFirst)];
    r.city = kCity[rng_() % (sizeof kCity / sizeof *kCity)];
    char date[16];
    std::snprintf(date, sizeof date, "%04u-%02u-%02u", 1940 + static_cast<unsigned>(rng_() % 65),
                  1 + static_cast<unsigned>(rng_() % 12), 1 + static_cast<unsigned>(rng_() % 28));
    r.birth = date;
    r.salary = static_cast<double>(150000 + rng_() % 9850000) / 100.0;
    r.quantity = static_cast<double>(rng_() % 1000);
    size_t length = 10 + rng_() % 51;
    size_t start = rng_() % (sizeof kWords - 1 - 60);
    r.note.assign(kWords + start, length);
  }

 private:
  std::mt19937 rng_;
};

// Writes a record into `row` of a store, one cell per field in field order; false on out of
// memory.
inline bool PutStandardRecord(CellStore& store, CellCursor& cursor, uint32_t row,
                              const StandardRecord& r) {
  const std::string* texts[kStandardFieldCount] = {nullptr,  &r.lastName, &r.firstName, &r.city,
                                                   &r.birth, nullptr,     nullptr,      &r.note};
  const double numbers[kStandardFieldCount] = {r.id, 0, 0, 0, 0, r.salary, r.quantity, 0};
  uint8_t buf[256];
  for (uint16_t c = 0; c < kStandardFieldCount; ++c) {
    if (kStandardFieldIsNumber[c]) {
      cell::EncodeNumber(buf, row, c, numbers[c]);
    } else {
      cell::EncodeText(buf, row, c, *texts[c]);
    }
    if (!store.PutCell(buf, &cursor)) return false;
  }
  return true;
}

}  // namespace kelpdex::bench

// Record sets made other than by filters: all records (Remove All Filters), the records that
// repeat values of some fields (Find Duplicates) and the records the set left out (Find
// Complement). Each first clears the filters in force, as one undo step, and ends with the sort.
#pragma once

#include <cstdint>
#include <vector>

#include "store/catalogue.h"
#include "store/record_set.h"

namespace kelpdex {

// Remove All Filters: the filters in force go and every record is found. False with the
// workbook's code (21).
bool RemoveAllFilters(const TableSpec& table, RecordSet& records);
// Every record whose fields first..last (at most 100 of them) equal those of another record,
// group after group. False with the workbook's code.
bool FindDuplicates(const TableSpec& table, RecordSet& records, uint16_t first, uint16_t last);
// The same for any list of fields, as a command line names them.
bool FindDuplicates(const TableSpec& table, RecordSet& records,
                    const std::vector<uint16_t>& fields);
// The records the set did not hold, in row order. False with the workbook's code.
bool FindComplement(const TableSpec& table, RecordSet& records);

// The steps alone, on a vector of rows and its count, with `rowCount` rows in the table.
void DuplicateRows(Worksheet& sheet, const std::vector<uint16_t>& fields, uint32_t* rows,
                   uint32_t rowCount, uint32_t& count);
void ComplementRows(uint32_t* rows, uint32_t rowCount, uint32_t& count);

}  // namespace kelpdex

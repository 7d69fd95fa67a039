// The chart elements of the native XML document: Chart2D, ChartXY and Chart3D, written from and
// read into the stored chart records (laid out in persist/chart_layout.h).
#pragma once

#include "persist/xml_scanner.h"
#include "persist/xml_writer.h"
#include "store/sheet_records.h"

namespace kelpdex {

// Writes the chart as its element (Chart2D, ChartXY or Chart3D by the record's type byte) at
// `indent` tabs. At most 16 series are written. False with the stream's error.
bool WriteChartElement(XmlWriter& writer, const ChartRecord& chart, int indent);

// Reads the chart element whose opening tag the scanner has just read with scan::kAttributes (its
// name is Chart2D, ChartXY or Chart3D), through its closing tag. The record is replaced as a
// whole. False with the scanner's error set.
bool ReadChartElement(XmlScanner& scanner, ChartRecord& chart);

}  // namespace kelpdex

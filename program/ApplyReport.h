// What the apply command says of a picture, in words and for machines.
#pragma once

#include "program/ApplyRun.h"
#include "program/Json.h"

namespace program {

// An entry of --json.
Json ReportOf(const PlannedFile& file, const FileResult& result);

// A line of --json-lines, with its line end. docs/at-scale.md describes it.
std::string ReportLine(const PlannedFile& file, const FileResult& result);

// The line on standard output, without its end.
std::string ResultText(const PlannedFile& file, const FileResult& result);

}  // namespace program

#include "program/ApplyReport.h"

#include "program/Messages.h"

namespace program {
namespace {

std::string SizeText(Size size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

Json JsonSize(Size size) {
  if (size.width == 0) return nullptr;
  return {{"width", size.width}, {"height", size.height}};
}

Json JsonError(const FileResult& result) {
  return result.error.empty() ? Json(nullptr) : Json(result.error);
}

const char* StatusOf(const FileResult& result) {
  return !result.error.empty() ? "failed" : result.isSkipped ? "skipped" : "done";
}

}  // namespace

Json ReportOf(const PlannedFile& file, const FileResult& result) {
  Json entry{{"input", Utf8Of(file.input)}};
  entry["output"] = result.isWritten ? Json(Utf8Of(file.output)) : Json(nullptr);
  entry["inputSize"] = JsonSize(result.size);
  entry["outputSize"] = JsonSize(result.isWritten ? result.resultSize : Size());
  entry["milliseconds"] = result.milliseconds;
  entry["skipped"] = result.isSkipped;
  entry["notes"] = result.notes;
  entry["error"] = JsonError(result);
  return entry;
}

std::string ReportLine(const PlannedFile& file, const FileResult& result) {
  const bool isThere = result.isWritten || result.isSkipped;
  Json line{{"version", kJsonVersion}, {"status", StatusOf(result)}};
  line["input"] = Utf8Of(file.input);
  line["output"] = isThere ? Json(Utf8Of(file.output)) : Json(nullptr);
  line["bytes"] = result.digest ? Json(result.digest->bytes) : Json(nullptr);
  line["sha256"] = result.digest ? Json(result.digest->sha256) : Json(nullptr);
  line["inputSize"] = JsonSize(result.size);
  line["outputSize"] = JsonSize(result.isWritten ? result.resultSize : Size());
  line["milliseconds"] = result.milliseconds;
  line["notes"] = result.notes;
  line["error"] = JsonError(result);
  return line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string ResultText(const PlannedFile& file, const FileResult& result) {
  return Utf8Of(file.output) + "  " +
         (result.isSkipped ? "is there, skipped" : SizeText(result.resultSize));
}

}  // namespace program

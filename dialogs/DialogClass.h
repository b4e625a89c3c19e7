// One row for each dialog: everything that makes it differ from the others.
#pragma once

#include <memory>
#include <span>

#include "toolkit/Panel.h"

class CPdibFilterDialog;
struct DialogClass;

// All texts and rows live as long as the library.
struct DialogClass {
  const char* className = nullptr;  // "CSepiaDialog"
  const char* progId = nullptr;     // of its filter
  const char* headerKey = nullptr;  // of the window's title
  const char* helpKey = nullptr;    // null for none
  const char* defaultText = "";     // shown over no filter
  std::span<const PanelField> fields = {};
  std::span<const PanelRow> rows = {};
  // Goes behind the dialog's own text when that is sent to the filters.
  const char* sentSuffix = "";
  // A text of the filters may repeat a measurement. What the dialog sends ends that, so that the
  // change is seen.
  bool endsMeasurement = false;
  // A new dialog with one reference; null for the plain one.
  CPdibFilterDialog* (*make)(const DialogClass& row) = nullptr;
};

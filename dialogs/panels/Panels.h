// Pieces that many panels are made of, and the families of dialogs.
#pragma once

#include <span>

#include "dialogs/DialogClass.h"

namespace dialogs {

// Rows of one key.
constexpr PanelRow SliderRow(const char* key, const char* caption, double least = 0,
                             double greatest = 100) {
  PanelRow row;
  row.control = RowControl::Slider;
  row.keys = {key};
  row.caption = caption;
  row.range = {least, greatest, 1, 0};
  row.look = least == -greatest ? toolkit::SliderLook::AroundZero
             : least == 0       ? toolkit::SliderLook::FromZero
                                : toolkit::SliderLook::Plain;
  return row;
}

// In steps of a tenth, or by the decimals.
constexpr PanelRow RealSliderRow(const char* key, const char* caption, double least,
                                 double greatest, double step = 0.1, int decimals = 1) {
  PanelRow row = SliderRow(key, caption, least, greatest);
  row.range = {least, greatest, step, decimals};
  row.look = toolkit::SliderLook::Plain;
  return row;
}

constexpr PanelRow NumberRow(const char* key, const char* caption, double least, double greatest) {
  PanelRow row = SliderRow(key, caption, least, greatest);
  row.control = RowControl::Number;
  return row;
}

constexpr PanelRow CheckRow(const char* key, const char* caption) {
  PanelRow row;
  row.control = RowControl::CheckBox;
  row.keys = {key};
  row.caption = caption;
  return row;
}

constexpr PanelRow ChoiceRow(const char* key, const char* caption,
                             std::span<const char* const> choices) {
  PanelRow row;
  row.control = RowControl::Choice;
  row.keys = {key};
  row.caption = caption;
  row.choices = choices;
  return row;
}

constexpr PanelRow ColourRow(const char* red, const char* green, const char* blue,
                             const char* caption) {
  PanelRow row;
  row.control = RowControl::Colour;
  row.keys = {red, green, blue};
  row.caption = caption;
  return row;
}

constexpr PanelRow TextRow(const char* key, const char* caption) {
  PanelRow row;
  row.control = RowControl::Text;
  row.keys = {key};
  row.caption = caption;
  return row;
}

constexpr PanelRow InGroup(PanelRow row, const char* group) {
  row.group = group;
  return row;
}

constexpr PanelRow EnabledWhen(PanelRow row, const char* key, double value = 1) {
  row.enabled = {key, value, true};
  return row;
}

// Rows that take turns in one place.
constexpr PanelRow ShownWhen(PanelRow row, int slot, const char* key, double value) {
  row.slot = slot;
  row.shown = {key, value, true};
  return row;
}

std::span<const DialogClass> ColourDialogs();
std::span<const DialogClass> MixerDialogs();
std::span<const DialogClass> ToneDialogs();
std::span<const DialogClass> MeasuringDialogs();  // of tone filters that look at the picture
std::span<const DialogClass> DetailDialogs();
std::span<const DialogClass> GeometryDialogs();
std::span<const DialogClass> CropDialogs();
std::span<const DialogClass> FrameDialogs();

}  // namespace dialogs

// Dialogs with a set of sliders for each colour: their rows are numbered, so they are made here.
#include <cstdio>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "dialogs/panels/Panels.h"

namespace dialogs {
namespace {

// Texts, fields and rows of one dialog. Texts keep their place.
struct Made {
  std::deque<std::string> texts;
  std::vector<PanelField> fields;
  std::vector<PanelRow> rows;
  std::string defaultText;

  const char* Keep(std::string text) { return texts.emplace_back(std::move(text)).c_str(); }
  void AddField(const std::string& key, const char* form, FieldKind kind, int start) {
    std::string piece = defaultText.empty() ? "" : ",";
    piece.append(key).append("=");
    char number[20];
    std::snprintf(number, sizeof number, std::strcmp(form, "%.3d") == 0 ? "%.3d" : "%d", start);
    defaultText.append(piece).append(number);
    fields.push_back({Keep(key), Keep(piece.append(form)), kind, double(start)});
  }
};

// What the choice of a channel shows is no part of the text.
constexpr PanelField kChannelField = {"Channel"};

constexpr const char* kHsbChannels[] = {"IDS_HSB_ALLCOLORS", "IDS_HSB_RED",  "IDS_HSB_YELLOW",
                                        "IDS_HSB_GREEN",     "IDS_HSB_CYAN", "IDS_HSB_BLUE",
                                        "IDS_HSB_MAGENTA"};
constexpr const char* kSectors[] = {"", "R", "Y", "G", "C", "B", "M"};
constexpr int kChannels = 7;

const Made& Hsb() {
  static const Made made = [] {
    Made hsb;
    struct Slider {
      const char *key, *caption;
      double greatest;
    };
    constexpr Slider kSliders[] = {{"Hue", "IDS_HSB_HUE", 180},
                                   {"Sat", "IDS_COMMON_SATURATION", 100},
                                   {"Bright", "IDS_COMMON_BRIGHTNESS", 100}};
    hsb.rows.push_back(ChoiceRow("Channel", "IDS_COMMON_CHANNEL", kHsbChannels));
    for (int channel = 0; channel < kChannels; ++channel) {
      for (int slider = 0; slider < 3; ++slider) {
        const Slider& data = kSliders[slider];
        hsb.AddField(std::string(data.key).append(kSectors[channel]), "%d", FieldKind::Integer, 0);
        hsb.rows.push_back(
            ShownWhen(SliderRow(hsb.fields.back().key, data.caption, -data.greatest, data.greatest),
                      slider, "Channel", channel));
      }
    }
    hsb.fields.push_back(kChannelField);
    return hsb;
  }();
  return made;
}

// Sliders 1 to 5 of ranges 0 to 6: S10, S20, ... S56.
const Made& ColourBalance() {
  static const Made made = [] {
    Made balance;
    constexpr const char* kCaptions[] = {"IDS_CCEX_RED", "IDS_CCEX_GREEN", "IDS_CCEX_BLUE",
                                         "IDS_CCEX_LIGHTNESS", "IDS_COMMON_SATURATION"};
    balance.rows.push_back(ChoiceRow("Channel", "IDS_COMMON_CHANNEL", kHsbChannels));
    for (int channel = 0; channel < kChannels; ++channel) {
      for (int slider = 0; slider < 5; ++slider) {
        balance.AddField(std::string("S").append(std::to_string(10 * (slider + 1) + channel)), "%d",
                         FieldKind::Integer, 0);
        balance.rows.push_back(
            ShownWhen(SliderRow(balance.fields.back().key, kCaptions[slider], -100, 100), slider,
                      "Channel", channel));
      }
    }
    balance.fields.push_back(kChannelField);
    return balance;
  }();
  return made;
}

constexpr const char* kMixerChannels[] = {"IDS_RGBMIXER_GREY", "IDS_COLOR_RED", "IDS_COLOR_GREEN",
                                          "IDS_COLOR_BLUE"};
constexpr const char* kMixerLetters[] = {"k", "r", "g", "b"};

void AddMixerFields(Made& mixer) {
  struct Flag {
    const char* key;
    int start;
  };
  constexpr Flag kFlags[] = {{"BOnK", 1},  {"BOnR", 0},  {"BOnG", 0},  {"BOnB", 0},  {"BBypass", 0},
                             {"BRgb0", 0}, {"BCon0", 1}, {"BRgb1", 0}, {"BCon1", 0}, {"BRgb2", 0},
                             {"BCon2", 0}, {"BRgb3", 0}, {"BCon3", 0}};
  for (const Flag& flag : kFlags) mixer.AddField(flag.key, "%.1d", FieldKind::Flag, flag.start);
  constexpr int kWeights[4][3] = {{30, 59, 11}, {100, 0, 0}, {0, 100, 0}, {0, 0, 100}};
  for (int channel = 0; channel < 4; ++channel) {
    for (int colour = 0; colour < 3; ++colour) {
      mixer.AddField(std::string(kMixerLetters[channel]) + "RGB"[colour], "%.3d",
                     FieldKind::Integer, kWeights[channel][colour]);
    }
  }
  for (const char* letter : kMixerLetters) {
    mixer.AddField(std::string(letter) + "C", "%.3d", FieldKind::Integer, 0);
  }
  mixer.fields.push_back(kChannelField);
}

void AddMixerChannel(Made& mixer, int channel) {
  const std::string number = std::to_string(channel);
  const std::string letter = kMixerLetters[channel];
  constexpr const char* kOn[] = {"BOnK", "BOnR", "BOnG", "BOnB"};
  const auto add = [&](PanelRow row, int slot) {
    mixer.rows.push_back(ShownWhen(row, slot, "Channel", channel));
  };
  add(CheckRow(kOn[channel], "IDS_RGBMIXER_ON"), 0);
  add(SliderRow(mixer.Keep(letter + "R"), "IDS_COLOR_RED", -200, 200), 1);
  add(SliderRow(mixer.Keep(letter + "G"), "IDS_COLOR_GREEN", -200, 200), 2);
  add(SliderRow(mixer.Keep(letter + "B"), "IDS_COLOR_BLUE", -200, 200), 3);
  add(CheckRow(mixer.Keep(std::string("BRgb").append(number)), "IDS_RGBMIXER_SHARES"), 4);
  const char* const constant = mixer.Keep(std::string("BCon").append(number));
  add(CheckRow(constant, "IDS_RGBMIXER_CONSTANT_ON"), 5);
  add(EnabledWhen(SliderRow(mixer.Keep(letter + "C"), "IDS_RGBMIXER_CONSTANT", -100, 100),
                  constant),
      6);
}

const Made& Mixer() {
  static const Made made = [] {
    Made mixer;
    AddMixerFields(mixer);
    mixer.rows.push_back(CheckRow("BBypass", "IDS_RGBMIXER_BYPASS"));
    mixer.rows.push_back(ChoiceRow("Channel", "IDS_COMMON_CHANNEL", kMixerChannels));
    for (int channel = 0; channel < 4; ++channel) AddMixerChannel(mixer, channel);
    return mixer;
  }();
  return made;
}

constexpr PanelField kEqualizerFields[] = {{"SatR", "SatR=%.3d"},  {"SatY", ",SatY=%.3d"},
                                           {"SatG", ",SatG=%.3d"}, {"SatC", ",SatC=%.3d"},
                                           {"SatB", ",SatB=%.3d"}, {"SatM", ",SatM=%.3d"}};
constexpr PanelRow kEqualizerRows[] = {
    SliderRow("SatR", "IDS_HSB_RED", -100),   SliderRow("SatY", "IDS_HSB_YELLOW", -100),
    SliderRow("SatG", "IDS_HSB_GREEN", -100), SliderRow("SatC", "IDS_HSB_CYAN", -100),
    SliderRow("SatB", "IDS_HSB_BLUE", -100),  SliderRow("SatM", "IDS_HSB_MAGENTA", -100)};

DialogClass Class(const char* className, const char* progId, const char* headerKey,
                  const char* helpKey, const Made& made) {
  DialogClass row;
  row.className = className;
  row.progId = progId;
  row.headerKey = headerKey;
  row.helpKey = helpKey;
  row.defaultText = made.defaultText.c_str();
  row.fields = made.fields;
  row.rows = made.rows;
  return row;
}

}  // namespace

std::span<const DialogClass> MixerDialogs() {
  static const std::vector<DialogClass> rows = {
      Class("CHsbDialog", "ZNFilter.HSB.1", "IDS_HSB_HEADER", "HLP_HSB", Hsb()),
      {.className = "CFarbEqualizerDialog",
       .progId = "ZNFilter.ColorTuning.1",
       .headerKey = "IDS_FARBEQUALIZER_HEADER",
       .helpKey = "HLP_FARBEQUALIZER",
       .defaultText = "SatR=000,SatY=000,SatG=000,SatC=000,SatB=000,SatM=000",
       .fields = kEqualizerFields,
       .rows = kEqualizerRows},
      Class("CColCorExDialog", "ZNFilter.Gamma.1", "IDS_CCEX_HEADER", "HLP_CCEX", ColourBalance()),
      Class("CRgbMixerDialog", "ZNFilter.RgbMixer.1", "IDS_RGBMIXER_HEADER", "HLP_RGBMIXER",
            Mixer())};
  return rows;
}

}  // namespace dialogs

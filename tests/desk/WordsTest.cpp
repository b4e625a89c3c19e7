// The words of the desk: there in both languages, all used, and fit for the window.
#include "desk/Words.h"

#include <gmock/gmock.h>

#include <fstream>
#include <set>
#include <sstream>

#include "desk/DeskWindow.h"
#include "host/FilterFacts.h"
#include "tests/platform/Support.h"
#include "tests/support/QuotedWords.h"
#include "toolkit/fake/FakeBackend.h"

namespace {

using toolkit::ControlKind;

std::set<std::string> KeysOf(const std::string& language) {
  return testing_support::KeysOfWords(FXBOX_SOURCE "/resources/strings/desk/" + language + ".txt");
}

// The pieces that the sources put together stand here as they are there.
std::set<std::string> UsedKeys() {
  std::set<std::string> used;
  for (const std::string& word : testing_support::QuotedWords(FXBOX_SOURCE "/desk")) {
    const bool isKey = testing_support::StartsWithAny(word, {"DESK_", "GROUP_", "PREVIEW_"});
    if (isKey && word != "DESK_") used.insert(word);
  }
  for (const std::string& word : testing_support::QuotedWords(FXBOX_SOURCE "/desk", "add(")) {
    used.insert("DESK_" + word);
    used.insert("DESK_" + word + "_BUBBLE");  // what can be taken back is said in the bubble
  }
  return used;
}

TEST(DeskWords, AreThereInBothLanguagesAndAllUsed) {
  const auto english = KeysOf("en");
  EXPECT_EQ(english, KeysOf("de"));
  std::set<std::string> wanted = UsedKeys();
  EXPECT_GT(wanted.size(), 120u);
  for (const std::string& key : english) {
    if (key.starts_with("FILTER_")) wanted.insert(key);
  }
  EXPECT_EQ(english, wanted);
  EXPECT_STREQ(desk::FindWords("FILTER_Sepia", "de"), "Sepiaton");
  EXPECT_STREQ(desk::FindWords("FILTER_Sepia", "fr"), "Sepia tone");
  EXPECT_EQ(desk::FindWords("FILTER_", "en"), nullptr);
}

TEST(DeskWords, TakeTheirTexts) {
  desk::ChooseLanguage("en");
  EXPECT_EQ(desk::Words("DESK_BATCH_PROGRESS", "%2", "7"), "%2 of 7");
  EXPECT_EQ(desk::Words("NO_SUCH_KEY"), "NO_SUCH_KEY");
}

// "describe" says the same of a preview.
TEST(DeskWords, SayOfPreviewsWhatTheCommandLineSays) {
  for (const char* const kind : {"exact", "scaled", "measured"}) {
    EXPECT_EQ(desk::FindWords(("PREVIEW_" + std::string(kind)).c_str(), "en"),
              host::PreviewText(kind));
  }
  EXPECT_THAT(host::PreviewText("100 %"),
              testing::StartsWith(desk::FindWords("PREVIEW_full", "en")));
}

// Every mnemonic of a menu leads to one entry, and every class has a name in the language.
TEST(DeskWords, FitTheWindowInBothLanguages) {
  for (const char* const language : {"en", "de"}) {
    SCOPED_TRACE(language);
    testing_support::TemporaryFolder folder;
    toolkit::FakeBackend backend;
    const toolkit::ScopedBackend scope(&backend);
    backend.language = language;
    desk::DeskOptions options;
    options.state = folder / "state";
    desk::DeskWindow window(options);
    ASSERT_TRUE(window.Open());
    const std::function<void(const std::vector<toolkit::MenuEntry>&)> check =
        [&](const std::vector<toolkit::MenuEntry>& entries) {
          std::set<char> letters;
          for (const toolkit::MenuEntry& entry : entries) {
            const std::size_t at = entry.text.find('&');
            if (at == entry.text.npos) continue;
            const char letter = static_cast<char>(std::tolower(entry.text[at + 1]));
            EXPECT_TRUE(letters.insert(letter).second) << entry.text;
            EXPECT_GT(letter, 0) << entry.text;
            check(entry.below);
          }
        };
    check(backend.LastWindow()->menuBar);
    for (const auto& entry : window.Work().Catalog().Entries()) {
      const std::string name = entry.progId.substr(9, entry.progId.rfind('.') - 9);
      EXPECT_NE(desk::FindWords(("FILTER_" + name).c_str(), language), nullptr) << name;
    }
    EXPECT_NE(
        backend.LastWindow()->ByName(language[0] == 'd' ? "Kette" : "Chain", ControlKind::Canvas),
        0);
  }
  desk::ChooseLanguage("en");
}

}  // namespace

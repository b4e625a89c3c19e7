#include "program/ChainOptions.h"

#include <filesystem>

#include "program/Host.h"
#include "program/Messages.h"
#include "program/Presets.h"
#include "program/StandardStreams.h"

namespace program {
namespace {

// Far more than any chain is: what goes on is no chain.
bool IsShort(const Bytes& first) {
  constexpr std::size_t kLongestPiece = std::size_t{1} << 24;
  return first.size() < kLongestPiece && first[0] != 0;
}

// Some editors begin UTF-8 with a mark; letters of two bytes have zero bytes.
std::string ReadChainFile(const std::string& file) {
  const auto bytes =
      file == kStandard ? ReadStandardInput(IsShort) : ReadPipe(PathOf(file), IsShort);
  std::string text(bytes.begin(), bytes.end());
  if (text.find('\0') != text.npos)
    throw UsageError(file + ": this is no chain in UTF-8, it has zero bytes");
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  return host::WithoutRemarks(text);
}

void TellOfFont(const std::string& warning) {
  PrintError(warning + " (fxbox fonts lists them)");
}

// The chain as it was given.
std::string GivenText(const ChainOptions& options) {
  if (options.chain && options.file)
    throw UsageError("give the chain with -c or with -f, not both");
  if (options.chain) return *options.chain;
  if (!options.file && options.texts.empty())
    throw UsageError("the chain is missing: give it with -c or -f");
  if (!options.file) return "ZNFilter.Text.1" + options.open + options.close;
  try {
    return ReadChainFile(*options.file);
  } catch (const FileError& error) {
    throw UsageError(error.what());
  }
}

// What relative paths in the chain start from.
std::filesystem::path FolderOf(const ChainOptions& options) {
  const auto here = std::filesystem::current_path();
  return options.file ? here / PathOf(*options.file).parent_path() : here;
}

}  // namespace

void AddChainOptions(const Command& command, ChainOptions& options) {
  command.Take("-c,--chain CHAIN", options.chain,
               "Chain text such as ZNFilter.Sepia.1(Sepia=050)ZNFilter.Invert.1(Inversity=100); "
               "ZNFilter.GradCurves.1 takes a preset too: (@FILE.fp2)");
  command.Take("-f,--file FILE", options.file,
               "File that holds the chain text, - for standard input; blanks and line ends "
               "between items are free, lines that begin with // are remarks");
  command.Take("--open MARKER", options.open, "Marker ahead of an item's parameters").ShowDefault();
  command.Take("--close MARKER", options.close, "Marker behind an item's parameters").ShowDefault();
  command.Take("--text TEXT", options.texts,
               "Any text, which becomes the Text of the chain's first filter that writes one "
               "(ZNFilter.Text.1, ZNFilter.WaterSign.1), percent-encoded; say it again for the "
               "next one. Without a chain: white letters in the middle of the picture");
  command.Flag("--lenient", options.lenient,
               "Take the text as the library takes it: what it does not know, it skips");
}

ChainText TakeChain(const ChainOptions& options, IAnimFilterCreator& creator) {
  const std::string outside = ExpandPresets(GivenText(options), options.open, options.close);
  ChainText chain{ChainTextOf(outside), ChainTextOf(options.open), ChainTextOf(options.close)};
  if (options.lenient && options.texts.empty()) return chain;
  try {
    const std::vector<FilterEntry> filters = ListFilters(creator);
    if (!options.lenient) chain.text = CheckChainText(chain, filters, creator);
    chain = WithTexts(chain, filters, options.texts);
    if (!options.lenient) chain = WithFullPaths(chain, filters, FolderOf(options), TellOfFont);
  } catch (const ChainError& error) {
    throw UsageError((options.file ? *options.file + ": " : "") + error.what());
  }
  return chain;
}

}  // namespace program

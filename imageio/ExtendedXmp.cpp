#include "imageio/ExtendedXmp.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>

#include "imageio/Md5.h"

namespace imageio {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::string_view kNote = "xmpNote:HasExtendedXMP";
constexpr std::string_view kEnd = "</rdf:RDF>";
constexpr std::size_t kDigestLetters = 32;
constexpr std::size_t kHeadBytes = kDigestLetters + 8;  // digest, length of the rest, place in it
constexpr std::size_t kPieceBytes = 65000;

constexpr char kMainPacket[] =
    "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>"
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">"
    "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
    "<rdf:Description rdf:about=\"\" xmlns:xmpNote=\"http://ns.adobe.com/xmp/note/\" "
    "xmpNote:HasExtendedXMP=\"%s\"/></rdf:RDF></x:xmpmeta><?xpacket end=\"w\"?>";

std::uint32_t NumberAt(const std::uint8_t* at) {
  return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 |
         at[3];
}

void PutNumber(Bytes& to, std::size_t number) {
  for (int shift = 24; shift >= 0; shift -= 8)
    to.push_back(static_cast<std::uint8_t>(number >> shift));
}

// The digest in the note, which is an attribute or an element; empty without one.
std::string NotedDigest(std::string_view packet) {
  const std::size_t note = packet.find(kNote);
  if (note == packet.npos) return {};
  const std::size_t at = packet.find_first_not_of(" \t\r\n=>\"'", note + kNote.size());
  if (at == packet.npos || packet.size() - at < kDigestLetters) return {};
  return std::string(packet.substr(at, kDigestLetters));
}

// The rest by its pieces; empty where one is missing or says something else than the others.
std::string RestOf(std::string_view digest, std::span<const Bytes> markers) {
  std::map<std::uint32_t, std::string_view> pieces;
  std::uint32_t length = 0;
  for (const Bytes& marker : markers) {
    const std::string_view text(reinterpret_cast<const char*>(marker.data()), marker.size());
    if (text.size() < kHeadBytes || !text.starts_with(digest)) continue;
    length = NumberAt(&marker[kDigestLetters]);
    pieces.emplace(NumberAt(&marker[kDigestLetters + 4]), text.substr(kHeadBytes));
  }
  std::string rest;
  for (const auto& [place, piece] : pieces) {
    if (place != rest.size()) return {};
    rest += piece;
  }
  return rest.size() == length ? rest : std::string();
}

// What stands between the tags that enclose all descriptions.
std::string_view DescriptionsOf(std::string_view packet) {
  const std::size_t start = packet.find("<rdf:RDF");
  const std::size_t open = packet.find('>', std::min(start, packet.size()));
  const std::size_t end = packet.rfind(kEnd);
  if (open == packet.npos || end == packet.npos || open > end) return {};
  return packet.substr(open + 1, end - open - 1);
}

// The note is of no use in a packet that is whole.
void RemoveNote(std::string& packet, const std::string& digest) {
  for (const char* form : {"xmpNote:HasExtendedXMP=\"%s\"", "xmpNote:HasExtendedXMP='%s'",
                           "<xmpNote:HasExtendedXMP>%s</xmpNote:HasExtendedXMP>"}) {
    char note[100];
    std::snprintf(note, sizeof note, form, digest.c_str());
    const std::size_t at = packet.find(note);
    if (at != packet.npos) packet.erase(at, std::string_view(note).size());
  }
}

}  // namespace

XmpPacket JoinXmp(const XmpPacket& main, std::span<const Bytes> markers) {
  std::string packet(main.begin(), main.end());
  const std::string digest = NotedDigest(packet);
  if (digest.empty()) return main;
  const std::string rest = RestOf(digest, markers);
  const std::string_view descriptions = DescriptionsOf(rest);
  const std::size_t end = packet.rfind(kEnd);
  if (descriptions.empty() || end == packet.npos) return main;
  packet.insert(end, descriptions);
  RemoveNote(packet, digest);
  return {packet.begin(), packet.end()};
}

SplitXmp SplitLongXmp(const XmpPacket& packet) {
  const std::string_view text(reinterpret_cast<const char*>(packet.data()), packet.size());
  if (DescriptionsOf(text).empty()) return {};
  const std::string digest = Md5(packet);
  char main[sizeof kMainPacket + kDigestLetters];
  const int length = std::snprintf(main, sizeof main, kMainPacket, digest.c_str());
  SplitXmp split = {{main, main + length}, {}};
  for (std::size_t at = 0; at < packet.size(); at += kPieceBytes) {
    const std::span piece =
        std::span(packet).subspan(at, std::min(kPieceBytes, packet.size() - at));
    Bytes& marker = split.markers.emplace_back(digest.begin(), digest.end());
    PutNumber(marker, packet.size());
    PutNumber(marker, at);
    marker.insert(marker.end(), piece.begin(), piece.end());
  }
  return split;
}

}  // namespace imageio

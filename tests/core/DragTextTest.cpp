// Chains as they are dragged: the bytes, and what is found again in texts of any kind.
#include "core/DragText.h"

#include <gtest/gtest.h>

#include "core/DataXferObj.h"
#include "core/TransferFormats.h"
#include "platform/component/ComPtr.h"

namespace {

using core::DragContent;
using core::MakeDragText;
using core::ReadDragText;

constexpr char kSepia[] = "ZNFilter.Sepia.1(Sepia=050)";
constexpr char kScale[] = "ZNFilter.Scale.1(MaximumHorizontalSize=100)";

TEST(DragText, IsMadeToTheByte) {
  struct Case {
    const char *chain, *second, *text;
  };
  const Case cases[] = {
      {"", "words", ""},
      {kSepia, "",
       "##KVVeltrane_DND_FILTERCHAIN_IA##ZNFilter.Sepia.1(Sepia=050)"
       "##KVVeltrane_DND_FILTERCHAIN_IA_END##"},
      {kScale, "",
       "##KVVeltrane_DND_FILTERCHAIN##ZNFilter.Scale.1(MaximumHorizontalSize=100)"
       "##KVVeltrane_DND_FILTERCHAIN_END##"},
      {"A", "words",
       "##KVVeltrane_DND_FILTERCHAIN_IA##A&&words\r\n##KVVeltrane_DND_FILTERCHAIN_IA_END##"},
      {"A", "&&words",
       "##KVVeltrane_DND_FILTERCHAIN_IA##A&&words\r\n##KVVeltrane_DND_FILTERCHAIN_IA_END##"},
      {"A", "one\ntwo",
       "##KVVeltrane_DND_FILTERCHAIN_IA##A&&one\ntwo\r\n##KVVeltrane_DND_FILTERCHAIN_IA_END##"},
      {"A", "ended\n",
       "##KVVeltrane_DND_FILTERCHAIN_IA##A&&ended\n##KVVeltrane_DND_FILTERCHAIN_IA_END##"},
      {"ZNFilter.Shadow.1()", "\n",
       "##KVVeltrane_DND_FILTERCHAIN##ZNFilter.Shadow.1()&&\n##KVVeltrane_DND_FILTERCHAIN_END##"}};
  for (const Case& c : cases) EXPECT_EQ(MakeDragText(c.chain, c.second), c.text) << c.chain;
}

TEST(DragText, RefusesWhatCouldNotBeReadBack) {
  EXPECT_EQ(MakeDragText("A&&B", ""), std::nullopt);
  EXPECT_EQ(MakeDragText("##KVVeltrane_DND_FILTERCHAIN_IA##", ""), std::nullopt);
  EXPECT_EQ(MakeDragText("A##KVVeltrane_DND_FILTERCHAIN_END##", ""), std::nullopt);
  // Together with the markers and marks around it.
  EXPECT_EQ(MakeDragText("KVVeltrane_DND_FILTERCHAIN_IA##A", ""), std::nullopt);
  EXPECT_EQ(MakeDragText("A##KVVeltrane_DND_FILTERCHAIN_IA_END", ""), std::nullopt);
  EXPECT_EQ(MakeDragText("A&", "words"), std::nullopt);
  const DragContent ampersand{"A&", ""};
  EXPECT_EQ(ReadDragText(*MakeDragText("A&", "")), ampersand);
  EXPECT_TRUE(MakeDragText("A&B##KVVeltrane_DND_FILTERCHAIN#C", ""));
}

TEST(DragText, IsFoundInAnyText) {
  const DragContent both{kScale, "first\r\nsecond && more"};
  const std::string text = *MakeDragText(both.chain, both.second);
  EXPECT_EQ(ReadDragText(text), both);
  EXPECT_EQ(ReadDragText("Dear friend,\n" + text + "\nyours"), both);
  const std::string fit = *MakeDragText(kSepia, "");
  const DragContent alone{kSepia, ""};
  EXPECT_EQ(ReadDragText(fit + text), alone) << "the first one";
  EXPECT_EQ(ReadDragText(text + fit), both) << "the first one";
  EXPECT_EQ(ReadDragText(text.substr(0, text.size() - 9) + text), both) << "one was cut off";
  EXPECT_EQ(ReadDragText(text.substr(0, text.size() - 9) + fit), alone);
  EXPECT_EQ(ReadDragText("##KVVeltrane_DND_FILTERCHAIN_END##" + text), both);
  const DragContent ended{"A", "one\r\n"};
  EXPECT_EQ(ReadDragText("##KVVeltrane_DND_FILTERCHAIN##A&&one\r\n\r\n"
                         "##KVVeltrane_DND_FILTERCHAIN_END##"),
            ended)
      << "one line end is ours";
}

TEST(DragText, IsNotFoundWithoutAPair) {
  const std::string text = *MakeDragText(kSepia, "words");
  for (std::size_t cut = 0; cut < text.size(); ++cut) {
    EXPECT_EQ(ReadDragText(text.substr(0, cut)), std::nullopt) << cut;
  }
  EXPECT_EQ(ReadDragText(text.substr(1)), std::nullopt);
  EXPECT_EQ(ReadDragText("##KVVeltrane_DND_FILTERCHAIN##A##KVVeltrane_DND_FILTERCHAIN_IA_END##"),
            std::nullopt)
      << "markers of both kinds";
}

TEST(DragText, TravelsInATransferObject) {
  using platform::ComPtr;
  const auto object = ComPtr<CDataXferObj>::Attach(new CDataXferObj);
  EXPECT_FALSE(core::AddDraggedChain(object.Get(), "", "words"));
  EXPECT_FALSE(core::AddDraggedChain(nullptr, kSepia));
  EXPECT_EQ(core::ReadDraggedChain(object.Get()), std::nullopt);
  ASSERT_TRUE(core::AddDraggedChain(object.Get(), kSepia, "words"));
  EXPECT_EQ(ReadTransferText(object.Get(), TransferFormat::FilterChainFitForIA), kSepia);
  EXPECT_FALSE(HoldsTransferText(object.Get(), TransferFormat::FilterChain));
  EXPECT_EQ(ReadPlainText(object.Get()), *MakeDragText(kSepia, "words"));

  const auto scaled = ComPtr<CDataXferObj>::Attach(new CDataXferObj);
  ASSERT_TRUE(core::AddDraggedChain(scaled.Get(), kScale));
  EXPECT_EQ(ReadTransferText(scaled.Get(), TransferFormat::FilterChain), kScale);

  const auto pasted = ComPtr<CDataXferObj>::Attach(new CDataXferObj);
  AddPlainText(pasted.Get(), ("from a mail: " + *MakeDragText(kSepia, "words")).c_str());
  const DragContent read{kSepia, "words"};
  EXPECT_EQ(core::ReadDraggedChain(pasted.Get()), read);
  const auto any = ComPtr<CDataXferObj>::Attach(new CDataXferObj);
  const std::string text = *MakeDragText(kSepia, "words");
  AddFilterChain(any.Get(), text.c_str());
  AddPlainText(any.Get(), text.c_str());
  EXPECT_EQ(core::ReadDraggedChain(any.Get()), read) << "a program that knows one text alone";
}

}  // namespace

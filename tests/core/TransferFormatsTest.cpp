// What goes on the clipboard or into a drag, as the system's data object sees it.
#include "core/TransferFormats.h"

#include <gtest/gtest.h>
#include <winbase.h>
#include <winuser.h>

#include <cstring>
#include <set>

#include "core/AnimChain.h"
#include "core/DataXferObj.h"
#include "core/PdibFilterChain.h"
#include "platform/component/ComPtr.h"
#include "tests/support/TestFilters.h"

namespace {

using platform::ComPtr;

constexpr TransferFormat kAll[] = {TransferFormat::FilterChain,
                                   TransferFormat::FilterChainFitForIA,
                                   TransferFormat::Filter,
                                   TransferFormat::FilterFitForIA,
                                   TransferFormat::ScaleFilter,
                                   TransferFormat::FilterNotForTrash,
                                   TransferFormat::FilterNotForTrashFitForIA,
                                   TransferFormat::FilterParameter,
                                   TransferFormat::FilterDialog,
                                   TransferFormat::FilterDialogFitForIA,
                                   TransferFormat::MergeChains};

class Transfer : public testing::Test {
 protected:
  ComPtr<CDataXferObj> object = ComPtr<CDataXferObj>::Attach(new CDataXferObj);
};

TEST_F(Transfer, EachFormatHasItsNameAndHoldsItsText) {
  std::set<UINT> numbers;
  for (const TransferFormat format : kAll) {
    const FORMATETC record = TransferFormatRecord(format);
    char name[80] = "";
    GetClipboardFormatNameA(record.cfFormat, name, sizeof name);
    EXPECT_STREQ(name, TransferFormatName(format));
    EXPECT_EQ(record.dwAspect, 1u);
    EXPECT_EQ(record.lindex, -1);
    EXPECT_FALSE(HoldsTransferText(object.Get(), format));
    AddTransferText(object.Get(), format, name);
    EXPECT_EQ(ReadTransferText(object.Get(), format), name);
    numbers.insert(record.cfFormat);
  }
  EXPECT_EQ(numbers.size(), 11u);
  EXPECT_STREQ(TransferFormatName(TransferFormat::FilterChain), "KVVeltraneAnimFilterChain");
  EXPECT_STREQ(TransferFormatName(TransferFormat::MergeChains), "KvVeltraneAnimFilterMergeChains");
  EXPECT_STREQ(TransferFormatName(TransferFormat::FilterNotForTrashFitForIA),
               "KVVeltraneAnimFilterNotForTrashFitForIA");
}

TEST_F(Transfer, GroupsFindTheirFormats) {
  AddScaleFilter(object.Get(), "scale");
  EXPECT_TRUE(HoldsAnyFilter(object.Get()));
  EXPECT_FALSE(HoldsAnyFilterChain(object.Get()));
  AddMergeChains(object.Get(), "merge");
  EXPECT_EQ(ReadAnyFilterChain(object.Get()), "merge");
  AddFilterChainFitForIA(object.Get(), "fit");
  EXPECT_EQ(ReadAnyFilterChain(object.Get()), "fit") << "a chain goes before one to merge";
  EXPECT_EQ(ReadAnyFilterDialog(object.Get()), std::nullopt);
  AddFilterDialogFitForIA(object.Get(), "");
  EXPECT_EQ(ReadAnyFilterDialog(object.Get()), "");
  AddFilterParameter(object.Get(), "Sepia=050");
  EXPECT_EQ(ReadFilterParameter(object.Get()), "Sepia=050");
  AddFilterChain(nullptr, "nothing");
  EXPECT_FALSE(HoldsAnyFilter(nullptr));
  EXPECT_EQ(ReadAnyFilter(nullptr), std::nullopt);
}

TEST_F(Transfer, BlocksAreTwoBytesLongerThanTheText) {
  AddFilter(object.Get(), "four");
  FORMATETC record = TransferFormatRecord(TransferFormat::Filter);
  STGMEDIUM medium = {};
  ASSERT_EQ(object->GetData(&record, &medium), S_OK);
  EXPECT_GE(GlobalSize(medium.hGlobal), 6u);
  EXPECT_EQ(std::memcmp(GlobalLock(medium.hGlobal), "four\0\0", 6), 0);
  GlobalUnlock(medium.hGlobal);
  ReleaseStgMedium(&medium);
}

TEST_F(Transfer, AnswersAsTheSystemsObjectDoes) {
  AddFilter(object.Get(), "first");
  AddFilterParameter(object.Get(), "text");
  AddFilter(object.Get(), "second");
  EXPECT_EQ(ReadAnyFilter(object.Get()), "second") << "set again";
  FORMATETC record = TransferFormatRecord(TransferFormat::Filter);
  record.tymed = TYMED_ISTREAM;
  EXPECT_EQ(object->QueryGetData(&record), DV_E_TYMED);
  record.tymed |= TYMED_HGLOBAL;
  EXPECT_EQ(object->QueryGetData(&record), S_OK);
  record.lindex = 3;
  EXPECT_EQ(object->QueryGetData(&record), DV_E_LINDEX);
  record = TransferFormatRecord(TransferFormat::FilterChain);
  STGMEDIUM medium = {};
  EXPECT_EQ(object->GetData(&record, &medium), DV_E_FORMATETC);
  EXPECT_EQ(object->SetData(&record, &medium, TRUE), DV_E_TYMED);
  EXPECT_EQ(object->GetData(nullptr, &medium), E_POINTER);
}

TEST_F(Transfer, EnumeratesWhatItHolds) {
  AddFilter(object.Get(), "a");
  AddFilterParameter(object.Get(), "b");
  ComPtr<IEnumFORMATETC> list;
  EXPECT_EQ(object->EnumFormatEtc(DATADIR_SET, list.Put()), E_NOTIMPL);
  ASSERT_EQ(object->EnumFormatEtc(DATADIR_GET, list.Put()), S_OK);
  FORMATETC formats[3] = {};
  ULONG fetched = 0;
  EXPECT_EQ(list->Next(3, formats, nullptr), E_POINTER);
  EXPECT_EQ(list->Next(3, formats, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 2u);
  EXPECT_EQ(formats[1].cfFormat, TransferFormatRecord(TransferFormat::FilterParameter).cfFormat);
  EXPECT_EQ(list->Reset(), S_OK);
  EXPECT_EQ(list->Skip(1), S_OK);
  ComPtr<IEnumFORMATETC> copy;
  ASSERT_EQ(list->Clone(copy.Put()), S_OK);
  EXPECT_EQ(copy->Next(1, formats, nullptr), S_OK);
  EXPECT_EQ(formats[0].cfFormat, TransferFormatRecord(TransferFormat::FilterParameter).cfFormat);
  EXPECT_EQ(list->Skip(2), S_FALSE);
}

// Without the right to release, the object copies, and the caller's block may change.
TEST_F(Transfer, CopiesWhatItMayNotKeep) {
  FORMATETC record = TransferFormatRecord(TransferFormat::Filter);
  STGMEDIUM medium = {};
  medium.tymed = TYMED_HGLOBAL;
  medium.hGlobal = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 8);
  std::strcpy(static_cast<char*>(GlobalLock(medium.hGlobal)), "mine");
  EXPECT_EQ(object->SetData(&record, &medium, FALSE), S_OK);
  std::strcpy(static_cast<char*>(GlobalLock(medium.hGlobal)), "changed");
  EXPECT_EQ(ReadAnyFilter(object.Get()), "mine");
  ReleaseStgMedium(&medium);
  EXPECT_EQ(ReadAnyFilter(object.Get()), "mine");
}

TEST(FitForIA, FourProgIdsAreNotFit) {
  for (const char* text :
       {"ZNFilter.Scale.1", "ZNFilter.Scale100.1", "ZNFilter.Offset.1", "ZNFilter.Shadow.1",
        "ZNFilter.Sepia.1(Sepia=050)ZNFilter.Scale.1(KeepProportions=1)"}) {
    EXPECT_FALSE(IsFitForIA(text)) << text;
  }
  for (const char* text : {"", "ZNFilter.Sepia.1", "ZNFilter.PrintScale.1", "ZNFilter.Scale"}) {
    EXPECT_TRUE(IsFitForIA(text)) << text;
  }
  EXPECT_TRUE(IsFitForIA(nullptr));
}

// A chain whose one filter has a text of this length.
KvString Saved(std::size_t length) {
  const auto chain = ComPtr<IAnimFilterChain>::Attach(new CPdibFilterChain);
  const auto filter = testing_support::Make(testing_support::TestClass(
      "Test.Long.1", 5000, 0, &testing_support::MakeFilter<testing_support::RecordingFilter>));
  chain->Insert(static_cast<IAnimFilter*>(filter.Get()));
  filter->SetParameter(std::string(length, 'x').c_str(), 1);
  KvString text = "before";
  SaveChainAsText(chain.Get(), text, "(", ")");
  return text;
}

TEST(SaveChain, GivesTheWholeTextOrNone) {
  EXPECT_EQ(Saved(3), "Test.Long.1(xxx)");
  const int around = static_cast<int>(std::strlen("Test.Long.1()"));
  EXPECT_EQ(Saved(3999).GetLength(), 3999 + around) << "with a second buffer";
  EXPECT_EQ(Saved(63986).GetLength(), 63986 + around);
  EXPECT_EQ(Saved(63987), "") << "64,000 with the terminator";
  KvString text = "before";
  SaveChainAsText(nullptr, text, "(", ")");
  EXPECT_EQ(text, "");
}

}  // namespace

#include "tests/support/TestFilters.h"

#include <deque>
#include <stdexcept>

namespace testing_support {

using platform::ComPtr;

const FilterClass& TestClass(const char* progId, int order, int sortKey,
                             FilterObject* (*make)(const FilterClass&)) {
  static std::deque<FilterClass> rows;
  CLSID classId = base::Guid("{5E57C1A5-0000-4000-8000-000000000000}");
  classId.Data2 = static_cast<std::uint16_t>(rows.size() + 1);
  rows.push_back({.sortKey = sortKey,
                  .className = "TestFilter",
                  .progId = progId,
                  .classId = classId,
                  .order = order,
                  .iconName = nullptr,
                  .nameKey = nullptr,
                  .helpKey = nullptr,
                  .defaultText = nullptr,
                  .gloss = "Test",
                  .make = make ? make : MakeFilter<RecordingFilter>,
                  .describe = nullptr});
  return rows.back();
}

HRESULT RecordingFilter::GetName(char* buffer, int size) {
  if (throws == Throws::GetName) throw std::runtime_error("GetName");
  return CPdibFilter::GetName(buffer, size);
}

HRESULT RecordingFilter::GetOrder(int* result) {
  if (throws == Throws::GetOrder) throw std::runtime_error("GetOrder");
  return CPdibFilter::GetOrder(result);
}

HRESULT RecordingFilter::SetParameter(const char* text, int) {
  if (throws == Throws::SetParameter) throw std::runtime_error("SetParameter");
  given.push_back(text);
  pending = text;
  return S_OK;
}

HRESULT RecordingFilter::GetParameter(char* buffer, int size) {
  CopyParameterText(pending, 1, buffer, size);
  return S_OK;
}

HRESULT RecordingFilter::GetActiveParameter(char* buffer, int size) {
  CopyParameterText(active, 1, buffer, size);
  return S_OK;
}

ComPtr<FilterObject> Make(const FilterClass& row) {
  return ComPtr<FilterObject>::Attach(row.make(row));
}

Rig::Rig(Picture picture, std::vector<ComPtr<FilterObject>> linked)
    : source(ComPtr<TestSource>::Attach(new TestSource(std::move(picture)))),
      destination(ComPtr<TestDestination>::Attach(new TestDestination)),
      filters(std::move(linked)) {
  Filter().SetSource(source->Unknown());
  for (std::size_t i = 1; i < filters.size(); ++i) {
    Filter(i).SetSource(static_cast<IAnimFilter*>(&Filter(i - 1)));
  }
  Tail().SetDestination(destination.Get());
}

Rig::Rig(Picture picture, const FilterClass& row)
    : Rig(std::move(picture), std::vector{Make(row)}) {}

Rig::~Rig() {
  for (auto& filter : filters) {
    filter->SetSource(nullptr);
    filter->SetDestination(nullptr);
  }
  source->AttachDestination(nullptr);
  destination->AttachSource(nullptr);
}

bool Rig::Prepare() {
  bool changed = false;
  Tail().Prepare(&changed, &revision, true);
  return changed;
}

Picture Rig::PullWhole() {
  Prepare();
  GuardedRows rows(destination->width, destination->height, 99);
  const HRESULT result = Pull(rows, {0, 0, 0, 0, rows.Width(), rows.Height()});
  return result == S_OK ? rows.Whole() : Picture();
}

HRESULT Rig::Pull(GuardedRows& rows, const RowRequest& r) {
  return Tail().ReadRows(r.destX, r.destY, r.srcX, r.srcY, r.width, r.height, rows.ColourRows(),
                         rows.MaskRows());
}

Picture Rig::PullPart(const RowRequest& r) {
  GuardedRows rows(r.destX + r.width + 2, r.destY + r.height + 2);
  const bool isDone =
      Pull(rows, r) == S_OK && rows.WrittenOutside(r.destX, r.destY, r.width, r.height).empty();
  return isDone ? rows.Part(r.destX, r.destY, r.width, r.height) : Picture();
}

Picture PartOf(const Picture& whole, const RowRequest& r) {
  Picture part(r.width, r.height);
  for (int y = 0; y < r.height && r.width > 0; ++y) {
    std::copy_n(whole.Colour(r.srcX, r.srcY + y), 3 * r.width, part.Colour(0, y));
    std::copy_n(whole.mask.begin() + (r.srcY + y) * whole.width + r.srcX, r.width,
                &part.Mask(0, y));
  }
  return part;
}

RowRequest AnyRequest(std::mt19937& random, const Picture& picture, int farthest) {
  const auto upTo = [&random](int most) {
    return static_cast<int>(random() % static_cast<unsigned>(most + 1));
  };
  RowRequest request;
  request.width = 1 + upTo(picture.width - 1);
  request.height = 1 + upTo(picture.height - 1);
  request.srcX = upTo(picture.width - request.width);
  request.srcY = upTo(picture.height - request.height);
  request.destX = upTo(farthest);
  request.destY = upTo(farthest);
  return request;
}

std::string PendingText(IAnimFilterParameter& filter, int size) {
  std::string text(static_cast<std::size_t>(size), '\0');
  filter.GetParameter(text.data(), size);
  return text.c_str();
}

std::string ActiveText(IAnimFilterParameter& filter, int size) {
  std::string text(static_cast<std::size_t>(size), '\0');
  filter.GetActiveParameter(text.data(), size);
  return text.c_str();
}

}  // namespace testing_support

// Filters over a picture in memory, pulled through the public interface.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "benchmarks/KeptPicture.h"
#include "core/AnimChain.h"

namespace benchmarks {

struct Item {
  std::string progId, text;
};

// The filters stand in the order in which they change the picture. One thread.
class FilterPull {
 public:
  FilterPull(const std::vector<Item>& items, int width, int height, bool isOpaque);
  // Links are cut, as source and filters hold each other.
  ~FilterPull();

  // Whether all filters could be made and give out rows.
  bool IsReady() const { return result && result->IsValid(); }
  const MemoryPicture& Picture() const { return source->Picture(); }
  MemoryPicture& Result() const { return *result; }
  // The source tells a change each time, so that a filter that keeps its result computes it again.
  bool Prepare();
  bool Run();
  // Whether the source lends its rows, from the next Run on.
  void SetLends(bool lends) { source->SetLends(lends); }
  // What the source takes to fill the caller's rows counts as well, from the next Run on.
  void FillAllRows() { source->FillAllRows(); }

 private:
  bool Append(IAnimFilterCreator& creator, const Item& item);

  platform::ComPtr<KeptPicture> source;
  std::vector<platform::ComPtr<IAnimFilter>> filters;
  platform::ComPtr<IAnimFilterDestCallsThis> rows;  // of the last one
  std::unique_ptr<MemoryPicture> result;
  int width = 0, height = 0;
};

}  // namespace benchmarks

// Any bytes as a chain text, with the parameter texts that it brings, and pulls through the result.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/ChainText.h"
#include "core/PdibFilter.h"
#include "core/PdibFilterChain.h"
#include "core/PdibFilterCreator.h"
#include "filters/FilterClasses.h"
#include "platform/component/ComPtr.h"

using platform::ComPtr;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  static const auto creator =
      ComPtr<IAnimFilterCreator>::Attach(new CPdibFilterCreator(FilterClasses()));
  const auto chain = ComPtr<IAnimFilterChain>::Attach(new CPdibFilterChain);
  chain->SetChainText(text.c_str(), "(", ")", creator.Get());
  chain->UpdateChain(text.c_str(), "(", ")", creator.Get());

  // A text that the chain hands out makes no change when it comes back.
  std::vector<char> first(1 << 16);
  std::vector<char> second(1 << 16);
  const int room = static_cast<int>(first.size());
  if (FAILED(chain->GetChainText(first.data(), room, "(", ")", false))) return 0;
  chain->SetChainText(first.data(), "(", ")", creator.Get());
  if (FAILED(chain->GetChainText(second.data(), room, "(", ")", false))) std::abort();

  std::uint8_t pixel[4] = {1, 2, 3, 4};
  ComPtr<IAnimFilterDestCallsThis> tail;
  chain->GetAt(-1, IAnimFilterDestCallsThis::kIid, tail.PutVoid());
  int unused = 0;
  if (tail) tail->GetInfo(&unused, &unused, &unused, &unused, &unused, &unused);
  if (tail) tail->ReadPixel(pixel);
  chain->RemoveAll();
  return 0;
}

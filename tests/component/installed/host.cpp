// A program that uses the installed library as its documentation says: a creator, a filter, a
// parameter, the icons and scripts.
#include <component/Fxbox4.h>
#include <core/AnimChain.h>
#include <core/AnimInterfaces.h>
#include <core/FilterShapes.h>
#include <imageio/ImageFile.h>
#include <platform/component/ComPtr.h>
#include <storage/KvPrivateStorage.h>

#include <cstdio>
#include <cstring>

int main() {
  platform::ComPtr<IAnimFilterCreator> creator;
  platform::ComPtr<IAnimFilterParameter> filter;
  FxboxCreateCreator(IAnimFilterCreator::kIid, creator.PutVoid());
  int count = 0;
  if (!creator || FAILED(creator->GetFilterCount(&count)) || count != 46) return 1;
  creator->CreateFilter("ZNFilter.Sepia.1", IAnimFilterParameter::kIid, filter.PutVoid());
  char text[100] = "";
  if (!filter || FAILED(filter->SetParameter("Sepia=042", 0))) return 2;
  filter->GetParameter(text, sizeof text);
  std::puts(text);
  // What it carries is in the program itself where that is linked statically.
  KvResourceStorage resource(reinterpret_cast<HMODULE>(&FxboxCreateCreator));
  IKvStorage* const scripts = resource.OpenStorage("Scripts", OpenModeRead, false, false);
  if (!scripts) return 4;
  scripts->Close();
  const bool isPng = imageio::FormatOfName("a.png") == imageio::Format::Png;
  return std::strcmp(text, "Sepia=042") == 0 && isPng ? 0 : 3;
}

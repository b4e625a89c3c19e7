/* A program that uses the module without registration, by the manifest beside it:
 *
 *   gcc sample.c -I..\include -o sample.exe -lole32
 *   cl sample.c /I..\include ole32.lib
 *
 * Copy sample.exe.manifest, Fxbox4.manifest and Fxbox4.dll beside it. The exit status is 0 when the
 * chain takes its text. */
#include <fxbox.h>
#include <objbase.h>
#include <stdio.h>

int main(void) {
  IAnimFilterCreator* creator = NULL;
  IAnimFilterChain* chain = NULL;
  char text[200] = "";
  CLSID id;

  CoInitialize(NULL);
  HRESULT status = CLSIDFromProgID(L"ZNFilter.Creator.1", &id);
  if (status == S_OK) {
    status = CoCreateInstance(&id, NULL, CLSCTX_INPROC_SERVER, &IID_IAnimFilterCreator,
                              (void**)&creator);
  }
  if (status != S_OK) return printf("no creator: %08lx\n", (unsigned long)status), 1;
  status = creator->lpVtbl->CreateChain(creator, &IID_IAnimFilterChain, (void**)&chain);
  if (status != S_OK) return printf("no chain: %08lx\n", (unsigned long)status), 1;
  chain->lpVtbl->SetChainText(chain, "ZNFilter.Sepia.1(Sepia=080)", "(", ")", creator);
  chain->lpVtbl->GetChainText(chain, text, sizeof text, "(", ")", false);
  printf("%s\n", text);
  chain->lpVtbl->Release(chain);
  creator->lpVtbl->Release(creator);
  CoUninitialize();
  return text[0] == 0;
}

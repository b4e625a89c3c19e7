#include "toolkit/windows/SystemDialogs.h"

#include <commdlg.h>

#include "toolkit/windows/GdiPlus.h"
#include "toolkit/windows/System.h"
#include "toolkit/windows/WideText.h"

namespace toolkit {
namespace {

// "*.fp2" twice, as name and as pattern, with the end marks that the dialog wants.
std::wstring FilterOf(const std::vector<std::string>& patterns) {
  std::wstring joined;
  for (const std::string& pattern : patterns)
    joined += (joined.empty() ? L"" : L";") + WideOf(pattern);
  std::wstring filter;
  if (!joined.empty()) filter = joined + L'\0' + joined + L'\0';
  return filter + L"*.*" + L'\0' + L"*.*" + L'\0';
}

// The id of the encoder that writes PNG.
constexpr CLSID kPngEncoder = {
    0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

}  // namespace

std::optional<Colour> RunColourDialog(HWND owner, Colour start) {
  static COLORREF own[16] = {};  // kept from one time to the next
  CHOOSECOLORW dialog = {};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner;
  dialog.rgbResult = RefOf(start);
  dialog.lpCustColors = own;
  dialog.Flags = CC_FULLOPEN | CC_RGBINIT;
  if (!ChooseColorW(&dialog)) return std::nullopt;
  return Colour{GetRValue(dialog.rgbResult), GetGValue(dialog.rgbResult),
                GetBValue(dialog.rgbResult)};
}

std::optional<std::filesystem::path> RunFileDialog(HWND owner, const std::string& title,
                                                   bool toSave, const std::filesystem::path& start,
                                                   const std::vector<std::string>& patterns) {
  std::error_code error;
  const bool isFolder = std::filesystem::is_directory(start, error);
  const std::wstring folder = isFolder ? start.wstring() : start.parent_path().wstring();
  std::wstring file = isFolder ? std::wstring() : start.filename().wstring();
  file.resize(32768);
  const std::wstring filter = FilterOf(patterns);
  const std::wstring wideTitle = WideOf(title);
  OPENFILENAMEW dialog = {};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner;
  dialog.lpstrFilter = filter.c_str();
  dialog.lpstrFile = file.data();
  dialog.nMaxFile = static_cast<DWORD>(file.size());
  dialog.lpstrInitialDir = folder.empty() ? nullptr : folder.c_str();
  dialog.lpstrTitle = wideTitle.c_str();
  dialog.Flags = OFN_EXPLORER | OFN_NOCHANGEDIR | OFN_HIDEREADONLY |
                 (toSave ? OFN_OVERWRITEPROMPT : OFN_FILEMUSTEXIST);
  const BOOL isChosen = toSave ? GetSaveFileNameW(&dialog) : GetOpenFileNameW(&dialog);
  if (!isChosen) return std::nullopt;
  return std::filesystem::path(file.c_str());
}

bool SaveWindowImage(HWND window, const std::filesystem::path& file) {
  RECT client;
  GetClientRect(window, &client);
  POINT corner = {0, 0};
  ClientToScreen(window, &corner);
  if (client.right < 1 || client.bottom < 1) return false;
  HDC screen = GetDC(nullptr);
  HDC memory = CreateCompatibleDC(screen);
  HBITMAP bitmap = CreateCompatibleBitmap(screen, client.right, client.bottom);
  HGDIOBJ before = SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, client.right, client.bottom, screen, corner.x, corner.y, SRCCOPY);
  SelectObject(memory, before);
  bool isSaved = false;
  {
    Gdiplus::Bitmap image(bitmap, nullptr);
    isSaved = image.Save(file.c_str(), &kPngEncoder, nullptr) == Gdiplus::Ok;
  }
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
  return isSaved;
}

}  // namespace toolkit

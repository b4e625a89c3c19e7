// What the window works on, without the window: a picture, its chain, and what is made of them.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/Background.h"
#include "desk/ChainDocument.h"
#include "desk/DialogBench.h"
#include "desk/FilterCatalog.h"
#include "desk/PictureTools.h"
#include "desk/RenderService.h"
#include "desk/WorkFile.h"

namespace desk {

struct BatchProgress {
  int done = 0, count = 0;
  std::string current;  // its name
  bool isOver = false;
  bool wasStopped = false;
  std::vector<std::string> errors;
};

// All calls come on one thread, on which `post` runs tasks later; all events come there. Names and
// texts are UTF-8.
class Session {
 public:
  using Post = std::function<void(std::function<void()>)>;

  // `state` is the folder for what is kept between runs. `takesLeft`: begin with the work that a
  // desk left behind that did not end well.
  Session(Post postTo, const std::filesystem::path& state, bool takesLeft);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  ChainDocument& Chain() { return document; }
  const FilterCatalog& Catalog() const { return catalog; }
  RenderService& Renderer() { return *renderer; }
  DialogBench& Bench() { return bench; }

  // --- pictures

  // A file or "BOX::NAME". What cannot be opened is told, and the picture stays that was there. The
  // chain that is given takes the place of the one that the picture has.
  void Open(const std::string& name, std::optional<ChainItems> chain = std::nullopt);
  // Files of any kind at once, as they are dropped or as the program is called: the first picture
  // is opened, and the last chain is loaded, for that picture or for the one that is there. Each
  // file that is neither is told with a message of its own.
  void OpenAll(const std::vector<std::string>& names);
  static bool IsChainFile(const std::string& file);
  // Opens what was left behind; false when nothing was.
  bool Recover();
  const std::string& Name() const { return name; }
  bool HasPicture() const { return static_cast<bool>(picture); }
  bool IsLoading() const { return loader.IsRunning(); }
  host::Size FullSize() const { return picture ? picture->FullSize() : host::Size(); }
  const std::vector<std::string>& Recent() const { return recent.Names(); }

  // --- the chain

  // Adds a filter behind those of its rank and lower ones, or at a place.
  void AddFilter(const std::string& progId, std::optional<int> place = std::nullopt);
  // The selected filters as a chain text in the code page, and the filters of one back; false when
  // the text holds none.
  std::string CopyText() const;
  bool Paste(const std::string& chainText, int place);
  bool LoadChain(const std::string& file);
  bool SaveChain(const std::string& file);
  // Where the chain of the picture is kept: beside it as "photo.chain", or in its box. A box has no
  // such file; then it is the one that a copy is proposed for. Without a picture it is the file
  // that the chain was loaded from.
  bool SaveOwnChain();
  std::filesystem::path ChainFile() const;
  bool HasChainFile() const { return HasPicture() || !chainAlone.empty(); }
  bool IsModified() const;
  // Opens the dialog of the selected filters, when they are of one class.
  bool EditSelection(void* ownerWindow);

  // --- work in the picture

  // The tool of the one filter that is selected, and its item; what is shown is then the picture
  // that the filter is worked on in.
  PictureTool Tool() const;
  std::optional<CropFrame> Crop() const;
  void SetCrop(const CropFrame& frame);
  // A red eye at a place, as shares of the sides from the lower left; or no more.
  void ClickEye(double x, double y);

  // --- what is shown

  // The size in pixels that the picture fits into on the screen; and whether more than that is
  // wanted, which is rendered behind it.
  void SetBox(host::Size box, bool wantsFull);
  const RenderResult& Shown() const { return shown; }
  // How exact the picture is that is shown.
  std::string Exactness() const;
  // The pixel of the shown picture before and after the chain; y counts from the bottom.
  std::optional<PixelPair> PixelAt(int x, int y);

  // --- results

  // With the bytes of `fxbox apply`.
  void Export(const std::string& file);
  // Runs the chain over pictures, into a folder.
  void Batch(const std::vector<std::string>& inputs, const std::string& folder);
  void StopBatch() { worker.Ask(); }
  bool IsWorking() const { return worker.IsRunning(); }

  // --- the end

  void Finish() { work.Finish(); }
  void Flush() { work.Flush(); }

  const std::vector<std::string>& Messages() const { return messages; }

  std::function<void()> onPicture;  // another one, or none
  std::function<void()> onItems, onSelection;
  std::function<void()> onShown;  // a stage is there
  std::function<void(const std::string&)> onMessage;
  std::function<void(const std::string&)> onDone;  // something is finished, in words
  std::function<void(const BatchProgress&)> onBatch;

 private:
  std::function<void()> WhileAlive(std::function<void()> task);
  void Tell(const std::string& message);
  std::uint64_t Gesture();
  void TakeItems();
  void TakeResult(const RenderResult& result);
  void TakePicture(const std::string& opened, const std::shared_ptr<LoadedPicture>& loaded,
                   std::uint64_t opening);
  std::optional<std::string> OwnChainText();
  void LoadOwnChain();
  const ChainItem* ToolItem() const;
  ChainItems ShownItems() const;
  void SetToolText(const std::string& parameters);
  void Render();
  bool IsPictureFile(const std::string& file, std::string& why) const;
  void TakeChain();
  std::optional<ChainItems> ReadChain(const std::string& file);
  ChainItems GoodItems(const std::string& chainText) const;
  std::optional<ChainItems> CheckedItems(const std::string& text, const std::string& where);
  void RunFiles(const std::vector<std::string>& inputs, const std::string& out, bool isExport);

  const Post post;
  std::shared_ptr<int> alive = std::make_shared<int>(0);
  const platform::ComPtr<IAnimFilterCreator> creator;
  const platform::ComPtr<IAnimFilterCreator> renderCreator;
  FilterCatalog catalog;
  ChainDocument document;
  WorkFile work;
  RecentPictures recent;
  DialogBench bench;

  std::string name;
  std::string chainAlone;                 // the file of a chain that was loaded without a picture
  std::optional<ChainItems> chainToTake;  // for the picture that is being opened
  std::string savedText;                  // the chain as it was loaded or saved
  std::shared_ptr<LoadedPicture> picture;
  host::Size screen{1280, 960};
  bool fullIsWanted = true;
  RenderResult shown;
  std::uint64_t requested = 0;
  std::uint64_t openings = 0;
  ChainItems renderedItems;
  host::Size renderedScreen;
  PicturePointer renderedFull;
  std::shared_ptr<LoadedPicture> renderedPicture;
  std::uint64_t gesture = 0;
  std::chrono::steady_clock::time_point lastChange;
  std::vector<std::string> messages;
  bool isRecovering = false;  // the chain that is there belongs to the picture that is opened

  Background loader, worker;
  std::unique_ptr<RenderService> renderer;
};

}  // namespace desk

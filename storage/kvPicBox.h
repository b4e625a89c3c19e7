// The picture box: named pictures inside a storage, whatever generation they were stored in.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/KvInterfaces.h"
#include "base/KvString.h"
#include "storage/PictureHead.h"

class KvFile;
class TraceLog;

namespace imageio {
class ImageLoader;
}

namespace picbox {

// The storages of a box, in the order in which a picture is looked for; behind the first one an
// older generation each.
enum Place {
  kPictures,      // current pictures: plain files (native) or streams with a head (new)
  kOnlyPic,       // old: the picture alone
  kPicMask,       // old: picture and mask
  kOnlyMask,      // old: the mask alone
  kRootPicMask,   // oldest, "Pic_Mask" beside "Pictures"
  kRootPicMask2,  // oldest, "PicMask" beside "Pictures"
  kPlaceCount,
};

struct CloseStream {
  void operator()(IKvStream* stream) const { stream->Close(); }
};
using StreamPtr = std::unique_ptr<IKvStream, CloseStream>;

// A picture that was found: its open stream, and what is known without decoding it.
struct FoundPicture {
  StreamPtr stream;
  Place place = kPictures;
  std::string streamName;
  bool native = false;        // the bytes are a plain file
  int kind = kNoKind;         // a PictureKind
  std::uint32_t size = 0;     // of the encoded picture; of the whole stream where it is native
  std::uint32_t encoded = 0;  // 0: a bitmap in the compressed part
  std::string tag;            // "JPG", or a file's ending as it is; empty where it is not known
  std::string fullName;       // the storage's path and the stream's name
  int headerSize = 0;         // of a head with all of its fields
  PictureHead head;           // as it was really read
};

}  // namespace picbox

// One box, one thread. The storages and streams that it opens are its own and are closed in its
// destructor; pictures and texts go in and out as copies.
//
// Names are in the system's code page, without regard to case in folders. A name is looked for as
// it is given, and stored with "_" in the place of every character that not all systems take.
//
// Failure: an empty result, 0 or false; HasFailed stays true from the first damaged picture or
// failed write on. Faults in streams are caught and written to the log. Three things are thrown:
// CKvError* by AddFile without a storage to write to, KvFileException where a file of a folder box
// is locked by somebody else for 400 ms, and std::bad_alloc. Where a write fails, a folder box and
// a compound file on Linux hold the picture from before, or none.
class FXBOX_API kvPicBox {
 public:
  using Bytes = picbox::Bytes;

  // Opens the box in a storage, which stays the caller's and has to live longer. A mode with
  // OpenModeCreate makes the storages of all generations. `native` and `external` are true where
  // either the storage or the argument says so. An external box opens nothing: its pictures are
  // the files of the storage's folder. Without the storage `name` the box HasFailed.
  kvPicBox(IKvStorage* parent, unsigned mode, const char* name = "Pictures", bool native = false,
           bool external = false);
  // Opens or makes a box: a compound file, or with `simple` a folder (its name gets "_kv").
  kvPicBox(const char* path, bool simple, bool native, bool external);
  ~kvPicBox();
  kvPicBox(const kvPicBox&) = delete;
  kvPicBox& operator=(const kvPicBox&) = delete;

  // Whether anything went wrong so far, the opening included. There is no way back.
  bool HasFailed() const { return failed; }
  // Of the last loader; 0 when it could decode.
  int LoaderStatus() const { return loaderStatus; }
  // The type of the picture that was loaded last (imageio::PictureType).
  int FoundType() const { return foundType; }
  // Whether new pictures are plain image files, and whether the box is a folder of such files.
  bool IsNative() const { return native; }
  bool IsExternal() const { return external; }

  // --- settings for the next operations

  // How camera raw pictures are to be developed: white balance and brightness, negative for those
  // of the camera. Kept for decoders; none that comes with the library asks for it.
  void SetRawParameters(bool autoA, bool autoB, double white1, double white2, double white3,
                        double bright1, double bright2, bool flag);
  // The version of such development, kept likewise.
  void SetRawVersion(int version) { rawVersion = version; }
  // Metadata for the next native save; copied.
  void SetExifData(const void* bytes, std::uint32_t count);
  void SetIptcData(const void* bytes, std::uint32_t count);
  // The format of native saves (imageio::PictureType); one that has no suffix counts as JPEG.
  void SetSaveType(int type) { saveType = type; }
  // 1 to 100, of native saves and of pictures with encoded bytes.
  void SetJpegQuality(int quality) { jpegQuality = quality; }

  // --- finding

  // The folder of the pictures; empty where there is none.
  KvString GetPath();
  // Whether OpenPicture would find it.
  bool Exists(const char* name, const char* ext = "");
  // Mode 1 finds by name, in the order of picbox::Place and with the native names first; mode 0 in
  // folders by the part up to the first "-" and the part from the first "." on. A box of native
  // pictures goes from mode 1 to mode 0 by itself. Nothing when there is no such picture.
  std::optional<picbox::FoundPicture> OpenPicture(int mode, const char* name, const char* ext = "");
  // The streams one after the other, notes and storages included; an empty text at the end.
  KvString FindFirstPicture();
  KvString FindNextPicture();

  // --- reading

  // Decodes a picture into packed bitmaps: the picture as it is stored, or in 24 bits where it is
  // an image file; the mask of 8 bits, empty where there is none. Preferred sizes, where neither is
  // negative, allow a reduced decode that is not smaller. x and y may be null. Both are empty on
  // failure.
  void GetQuick(const char* name, const char* ext, Bytes* picture, Bytes* mask,
                int preferredWidth = -1, int preferredHeight = -1, std::int32_t* x = nullptr,
                std::int32_t* y = nullptr, bool usePoly = false);
  // The stored bytes without decoding. `size` carries the room of the buffer in and the number of
  // bytes there are out; at most the room is copied, and the result is what was copied. Where the
  // stream does not hold what is wanted, the two flags tell what it holds and the result is 0.
  unsigned GetImageFileInfo(const char* name, bool* wantPicture, bool* wantMask, unsigned* size,
                            void* buffer, const char* ext = "");
  // A JPEG's bytes from its start to the end of its SOS segment; their number, 0 without a JPEG.
  unsigned GetJPegHeader(const char* name, Bytes* header, const char* ext = "");
  // The kind and, as a result, the tag of a stream at its start.
  KvString Read5BytesHeader(IKvStream* stream, int* kind);
  // The picture type by a stream's bytes from its position on, which it keeps, and its extension.
  int GetType(IKvStream* stream, KvString* tag);
  // The type and extension that a native copy of the picture would have.
  int AnalyzeFile(const char* name, KvString& tag, const char* ext = "");

  // The note beside a picture: its text in the code page, empty without a note or where that is
  // broken; with `block` its 36 bytes too, which stay as they are then.
  KvString GetImageInfo(const char* name, void* block);

  // --- writing

  // Stores a picture given as packed bitmaps; the number of bytes stored, 0 on failure. `asNative`,
  // or `encode` without a mask, saves an image file of the save type under the name with its
  // suffix; otherwise the new format is written, with `encode` around a JPEG file. `replace`
  // deletes the name first. The mask may be empty; it has the picture's size.
  unsigned AddFile(const char* name, std::span<const std::uint8_t> picture,
                   std::span<const std::uint8_t> mask, std::int32_t x, std::int32_t y, bool encode,
                   bool asNative, bool replace);
  // Stores an image file as it is: under its name and extension in a box of native pictures, else
  // inside a picture of an older generation. With `kept` a file of at most 16 MiB is handed out.
  bool AddFileStream(const char* name, const char* ext, KvFile& file, bool asNative, Bytes* kept);
  // Opens the stream of a new picture, head written; the caller writes the body and closes it. Null
  // where no generation can be written.
  IKvStream* OpenWritePic(const char* name, const char* ext, bool asNative, bool newFormat,
                          int kind, std::uint32_t size, std::int32_t encoded);
  // Writes the note; `block` may be null for 36 zeros, else its first five bytes become the
  // version.
  bool WriteImageInfo(const char* name, const char* text, void* block);
  static const char* GetVersion() { return "V1000"; }
  static constexpr unsigned kBlockBytes = 36;

  // Deletes one generation of a picture, and its note. Never a storage.
  bool Delete(const char* name, const char* ext = "");
  // Files alone: false in a compound file. Refused where the new name is there already.
  bool Rename(const char* oldName, const char* newName, const char* ext = "");
  // Copies a picture with its note into another box, in the target's new format or an older one;
  // `keepNative` makes an image file of it. `ext` is the extension wanted, and carries out the one
  // that was taken. A picture that is copied onto itself stays as it is. False where the note could
  // not be copied, too: the picture is there then.
  bool CopyImage(const char* source, kvPicBox& target, const char* targetName, bool newFormat,
                 KvString& ext, bool keepNative);

  // --- for who looks at all generations

  IKvStorage* StorageOf(picbox::Place place) const { return storages[place]; }
  // Opens a stream of one place and reads its head; nothing when it is not there.
  std::optional<picbox::FoundPicture> OpenAt(picbox::Place place, const char* name);
  // Decodes a picture that was found; its stream is used up. As GetQuick.
  void Load(picbox::FoundPicture& found, Bytes* picture, Bytes* mask, int preferredWidth,
            int preferredHeight, std::int32_t* x, std::int32_t* y);
  // The image file in a found picture: all of a native one; empty for a bitmap.
  Bytes ReadEncoded(picbox::FoundPicture& found);

 private:
  struct Guarded;

  TraceLog& Log();
  void OpenStorages(IKvStorage* parent, unsigned mode, const char* name);
  std::optional<picbox::FoundPicture> Find(int mode, const char* name, const char* ext);
  std::optional<picbox::FoundPicture> FindSpelled(int mode, const std::string& name,
                                                  const std::string& ext);
  picbox::StreamPtr OpenNamed(int mode, IKvStorage* storage, std::string& name);
  std::optional<picbox::FoundPicture> FindNative(int mode, IKvStorage* storage, picbox::Place place,
                                                 std::string streamName, const std::string& tag);
  void TakeHead(picbox::FoundPicture& found);
  void TakeNewHead(picbox::FoundPicture& found);
  void TakeOldHead(picbox::FoundPicture& found);
  KvString FirstFromStage();

  void LoadStored(picbox::FoundPicture& found, Bytes& picture, Bytes& mask, int preferredWidth,
                  int preferredHeight, std::int32_t* x, std::int32_t* y);
  void LoadNative(picbox::FoundPicture& found, Bytes& picture, Bytes& mask, int preferredWidth,
                  int preferredHeight);
  bool Decode(imageio::ImageLoader& loader, Bytes& picture, Bytes& mask, int preferredWidth,
              int preferredHeight);
  unsigned ReadRaw(picbox::FoundPicture& found, bool* wantPicture, bool* wantMask, unsigned* size,
                   void* buffer);
  Bytes ReadJpegHeader(IKvStream& stream, unsigned start);

  unsigned SaveNative(const char* name, std::span<const std::uint8_t> picture,
                      std::span<const std::uint8_t> mask);
  unsigned SaveNew(const char* name, std::span<const std::uint8_t> picture,
                   std::span<const std::uint8_t> mask, std::int32_t x, std::int32_t y, bool encode);
  IKvStream* OpenOld(const std::string& name, int kind, std::uint32_t size, std::int32_t encoded);
  std::optional<bool> StoreFile(const char* name, const std::string& tag, KvFile& file,
                                bool asNative, Bytes* kept, std::uint64_t& done);
  bool DeleteAny(const std::string& name, const std::string& ext, picbox::Place& place);
  bool DeleteFound(IKvStorage* storage, const std::string& name);
  bool RenameFile(IKvStorage* storage, const std::string& from, const std::string& to);
  bool CopyNote(const char* source, kvPicBox& target, const char* targetName);

  bool CopyExternal(const char* source, kvPicBox& target, const char* targetName, bool newFormat,
                    const std::string& ext);
  bool CopyInternal(const char* source, kvPicBox& target, const char* targetName, bool newFormat,
                    KvString& ext, bool keepNative);
  bool CopyConverted(const char* source, kvPicBox& target, const char* targetName, int type,
                     const std::string& ext);
  bool CopyInto(picbox::FoundPicture& found, kvPicBox& target, const char* targetName,
                bool newFormat, const std::string& tag);
  void TellReadOnly(const std::filesystem::path& source, const std::string& copy);
  bool CopyStream(picbox::FoundPicture& found, kvPicBox& target, const char* targetName,
                  bool newFormat, const std::string& tag);
  bool CopyOut(picbox::FoundPicture& found, kvPicBox& target, const char* targetName,
               const std::string& ext);
  bool IsSamePicture(const char* source, kvPicBox& target, const char* targetName);
  std::string TargetFolder();

  KvString name;
  std::unique_ptr<TraceLog> log;
  IKvStorage* parent = nullptr;
  IKvStorage* ownParent = nullptr;  // the one that the box has opened itself
  IKvStorage* storages[picbox::kPlaceCount] = {};
  int enumerationStage = -1;
  bool failed = false;
  int loaderStatus = 0;
  int jpegQuality = 95;
  int foundType = 0;
  int saveType = 1;
  bool native;
  bool external;
  KvString externalPath;
  bool rawAutoA = true;
  bool rawAutoB = false;
  bool rawFlag = true;
  double rawWhite1 = -1.0;
  double rawWhite2 = -1.0;
  double rawWhite3 = -1.0;
  double rawBright1 = -1.0;
  double rawBright2 = 0.6;
  int rawVersion = 1;
  Bytes exifData;
  Bytes iptcData;
};

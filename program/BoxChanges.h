// The box commands that write. Each leaves the box as it was, or with the whole change.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace program {

enum class StoreAs { Bitmap, Encoded, Native };

struct AddRequest {
  std::string box;
  std::vector<std::string> files;
  std::optional<std::string> name;
  StoreAs as = StoreAs::Bitmap;
  std::int32_t x = 0;
  std::int32_t y = 0;
  bool replaces = false;
};

struct CopyRequest {
  std::string box;
  std::string name;
  std::string targetBox;
  std::optional<std::string> newName;
  bool toOld = false;
  bool toNative = false;
};

// Each gives the exit status; failures are FileErrors, wrong names UsageErrors. Names are as they
// came from the command line.
int AddToBox(const AddRequest& request);
int CopyInBoxes(const CopyRequest& request);
int NotePicture(const std::string& box, const std::string& name, const std::string& text,
                const std::optional<std::string>& blockFile);
int DeletePicture(const std::string& box, const std::string& name);
int RenamePicture(const std::string& box, const std::string& oldName, const std::string& newName);

}  // namespace program

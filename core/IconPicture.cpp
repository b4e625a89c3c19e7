#include "core/IconPicture.h"

#include "platform/ModuleResource.h"
#include "storage/KvPrivateStorage.h"
#include "storage/kvPicBox.h"

namespace core {

IconPicture ReadIconPicture(const std::string& name) {
  static const char place = 0;
  KvResourceStorage resource(platform::ModuleAt(&place));
  kvPicBox box(&resource, OpenModeRead);
  IconPicture picture;
  box.GetQuick(name.c_str(), "", &picture.colour, &picture.mask);
  return picture.mask.empty() ? IconPicture() : picture;
}

}  // namespace core

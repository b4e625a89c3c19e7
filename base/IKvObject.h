// The root of the classes that a host destroys through a pointer to an interface.
#pragma once

#include "base/Export.h"

class FXBOX_API IKvObject {
 public:
  virtual ~IKvObject() = default;

 protected:
  IKvObject() = default;
  IKvObject(const IKvObject&) = default;
  IKvObject& operator=(const IKvObject&) = default;
};

// The lists that a connection point hands out.
#pragma once

#include <ocidl.h>

#include <vector>

#include "platform/component/ComPtr.h"

namespace dialogs {

// The one point of a container.
HRESULT ListConnectionPoint(IConnectionPoint* point, IEnumConnectionPoints** result);

// Those that are there; the cookie of a sink is its place from 1.
HRESULT ListConnections(const std::vector<platform::ComPtr<IUnknown>>& sinks,
                        IEnumConnections** result);

}  // namespace dialogs

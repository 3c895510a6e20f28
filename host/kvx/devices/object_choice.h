// Which audio object a user means.
#pragma once

#include "host/kvx/library/core_audio.h"

#include <string>

namespace kvx {

struct ChosenObject {
    ObjectID id = 0;
    std::string name; ///< as messages call it
};

/// "system"; a device by its row in `kvx devices`, its UID, its name or a part of one that fits a single
/// device; `id:N` or `stream:N`, an object by its ID. A plain number that is no row is an ID.
/// Throws Failure: what there is none of, or what fits several.
ChosenObject chooseObject(const CoreAudio& core, const std::string& text);

/// The same within a value, where plain numbers are always IDs and 0 is no object.
ObjectID objectInValue(const CoreAudio& core, const std::string& text);

} // namespace kvx

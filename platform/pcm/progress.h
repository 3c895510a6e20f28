// How far a conversion went.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

struct Progress {
    UInt32 used; ///< input frames
    UInt32 made; ///< output frames
};

} // namespace kvxplatform::pcm

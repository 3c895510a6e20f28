// The component's entry point: every request to it arrives here.
#pragma once

#include <Carbon/Carbon.h>

namespace soundstream {

/// Answer one request. What the table does not have goes to the mixer from selector 256 up, and is refused
/// below.
/// Shape   `storage` is the instance's QTSoundStreamGlobals, null until it is open.
/// Thread  [client].
ComponentResult QTSoundStreamDispatch(ComponentParameters* parameters, Handle storage);

} // namespace soundstream

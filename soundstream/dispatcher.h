// The component's entry point, which receives every request of a client.
#pragma once

#include <Carbon/Carbon.h>

namespace soundstream {

/// Handle one request. A selector without a handler is delegated to the mixer if it is 256 or higher, and is
/// refused if it is lower.
///
/// Shape   `storage` is the instance's QTSoundStreamGlobals, which may be freed already; null before Open.
/// Errors  badComponentSelector if the selector is refused.
/// [client]
ComponentResult QTSoundStreamDispatch(ComponentParameters* parameters, Handle storage);

} // namespace soundstream

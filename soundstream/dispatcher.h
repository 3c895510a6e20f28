// The component's entry point: every request of a client arrives here.
#pragma once

#include <Carbon/Carbon.h>

namespace soundstream {

/// Answer one request. Selectors without a handler go to the mixer from 256 on; lower ones are refused.
///
/// Shape   `storage` is the instance's QTSoundStreamGlobals, which may be freed already; null before Open.
/// Errors  badComponentSelector: refused.
/// [client]
ComponentResult QTSoundStreamDispatch(ComponentParameters* parameters, Handle storage);

} // namespace soundstream

// The sound output component's dispatcher.
#include "plugin/classes.h"

namespace soundstream {
namespace {

struct ComponentParameters;
constexpr long badComponentSelector = static_cast<long>(0x80008002);

/// Answer one request to the component. It has no selectors yet, so each is refused as the Component Manager
/// asks.
long QTSoundStreamDispatch(ComponentParameters*, char** /*storage*/) { return badComponentSelector; }

} // namespace
} // namespace soundstream

const AnyFunction soundStreamDispatcher = reinterpret_cast<AnyFunction>(soundstream::QTSoundStreamDispatch);

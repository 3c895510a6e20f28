#include "platform/soundmanager/slices.h"

#include "platform/support/wait_until.h"

namespace kvxplatform::soundmanager {
namespace {

/// How many slices this thread is inside of. Initial-exec: the audio thread does not allocate it on first
/// use.
__attribute__((tls_model("initial-exec"))) thread_local int slicesAround = 0;

} // namespace

Slices::Turn::Turn(Slices& s) : slices(s), isOurs(!s.isUnderWay.exchange(true))
{
    if (isOurs) ++slicesAround;
}

Slices::Turn::~Turn()
{
    if (!isOurs) return;
    --slicesAround;
    ++slices.over;
    slices.isUnderWay = false;
}

void Slices::wait() const
{
    if (slicesAround > 0) return;
    const UInt32 slice = current();
    waitUntil([&] { return isOver(slice); });
}

} // namespace kvxplatform::soundmanager

#include "platform/support/render_scope.h"

#include "platform/support/wait_until.h"

#include <pthread.h>

namespace kvxplatform {
namespace {

// The initial-exec model makes the first access on a render thread free of allocation.
__attribute__((tls_model("initial-exec"))) thread_local int scopesAround = 0;

std::uintptr_t thisThread() { return static_cast<std::uintptr_t>(pthread_self()); }

} // namespace

RenderScope::Entry::Entry(RenderScope& scope) : scope_(nullptr)
{
    std::uintptr_t none = 0;
    if (!scope.thread_.compare_exchange_strong(none, thisThread())) return;
    scope_ = &scope;
    ++scope.count_;
    ++scopesAround;
}

RenderScope::Entry::~Entry()
{
    if (!scope_) return;
    --scopesAround;
    ++scope_->count_;
    scope_->thread_ = 0;
}

void RenderScope::wait() const
{
    if (isInside()) return;
    const Stamp stamp = now();
    waitUntil([&] { return hasLeft(stamp); });
}

bool RenderScope::isInside() const { return thread_ == thisThread(); }

bool RenderScope::isInsideAny() { return scopesAround > 0; }

} // namespace kvxplatform

// CoreAudioListenerKVX as the host sees it.
#include "plugin/class_table.h"
#include "plugin/classes.h"

namespace listener {
namespace {

constexpr Word declaredDataSize = 20; // bytes of class data that the host sets aside for each object

} // namespace
} // namespace listener

REALclassDefinition coreAudioListenerClass =
    table::classDefinition("CoreAudioListenerKVX", listener::declaredDataSize, {nullptr, nullptr});

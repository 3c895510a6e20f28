// CoreAudioKVX as the host sees it.
#include "plugin/class_table.h"
#include "plugin/classes.h"

namespace coreaudio {
namespace {

constexpr Word declaredDataSize = 4; // bytes of class data that the host sets aside for each object

} // namespace
} // namespace coreaudio

REALclassDefinition coreAudioClass =
    table::classDefinition("CoreAudioKVX", coreaudio::declaredDataSize, {nullptr, nullptr});

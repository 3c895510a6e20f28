// The table of live converters.
#include "platform/audioconverter/converter.h"

#include "platform/support/live_count.h"

namespace kvxplatform::audioconverter {
namespace {

LiveCount liveCount("AudioConverter");

// The table is never destroyed, because a render thread may still fill a converter while the process exits.
Converters& table()
{
    static Converters& converters = *new Converters;
    return converters;
}

} // namespace

Converter::Converter(const AudioStreamBasicDescription& from, const AudioStreamBasicDescription& to)
    : source(from), destination(to)
{
    liveCount.add();
}

Converter::~Converter() { liveCount.remove(); }

AudioConverterRef add(std::unique_ptr<Converter> converter)
{
    return handleOf<AudioConverterRef>(
        table().add(std::move(converter), [](Converter& made, HandleNumber number) {
            made.self = handleOf<AudioConverterRef>(number);
            return true;
        }));
}

Converters::Use use(AudioConverterRef handle) { return table().use(numberOf(handle)); }

bool dispose(AudioConverterRef handle)
{
    Converters::Use closing = table().beginClose(numberOf(handle));
    if (!closing) return false;
    closing->isDisposed = true;
    table().endClose(std::move(closing));
    return true;
}

} // namespace kvxplatform::audioconverter

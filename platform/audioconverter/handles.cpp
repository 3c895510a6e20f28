#include "platform/audioconverter/converter.h"

#include "platform/support/live_count.h"

namespace kvxplatform::audioconverter {
namespace {

LiveCount account("AudioConverter");

// Never destroyed: what nobody disposes stays in it and is counted, and an audio thread may still fill one
// while the program ends.
Converters& table()
{
    static Converters& converters = *new Converters;
    return converters;
}

} // namespace

Converter::Converter(const AudioStreamBasicDescription& from, const AudioStreamBasicDescription& to)
    : source(from), destination(to)
{
    account.add();
}

Converter::~Converter() { account.remove(); }

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

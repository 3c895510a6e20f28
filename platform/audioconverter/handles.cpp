#include "platform/audioconverter/converter.h"

#include "platform/accounts/account.h"

namespace kvxplatform::audioconverter {
namespace {

Account account("AudioConverter");

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
    return components::handleOf<AudioConverterRef>(
        table().add(std::move(converter), [](Converter& made, components::HandleNumber number) {
            made.self = components::handleOf<AudioConverterRef>(number);
            return true;
        }));
}

Converters::Use use(AudioConverterRef handle) { return table().use(components::numberOf(handle)); }

bool dispose(AudioConverterRef handle)
{
    Converters::Use closing = table().beginClose(components::numberOf(handle));
    if (!closing) return false;
    closing->isDisposed = true;
    table().endClose(std::move(closing));
    return true;
}

} // namespace kvxplatform::audioconverter

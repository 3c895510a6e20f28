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

components::HandleNumber numberOf(AudioConverterRef handle)
{
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const auto number = static_cast<components::HandleNumber>(value);
    return value == number ? number : 0;
}

AudioConverterRef handleOf(components::HandleNumber number)
{
    return reinterpret_cast<AudioConverterRef>(static_cast<std::uintptr_t>(number));
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
    return handleOf(table().add(std::move(converter), [](Converter& made, components::HandleNumber number) {
        made.self = handleOf(number);
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

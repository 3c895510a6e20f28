#include "host/kvx/files/encoded_output.h"

#include "host/kvx/files/streams.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace kvx {

EncodedOutput::~EncodedOutput() { closeFile(); }

SF_VIRTUAL_IO EncodedOutput::functions()
{
    SF_VIRTUAL_IO functions = {};
    functions.get_filelen = [](void* context) -> sf_count_t {
        return static_cast<EncodedOutput*>(context)->length_;
    };
    functions.seek = [](sf_count_t offset, int from, void* context) -> sf_count_t {
        auto& self = *static_cast<EncodedOutput*>(context);
        const std::int64_t start = from == SEEK_SET ? 0 : from == SEEK_CUR ? self.position_ : self.length_;
        return self.position_ = start + offset;
    };
    functions.read = [](void*, sf_count_t, void*) -> sf_count_t { return 0; };
    functions.write = [](const void* bytes, sf_count_t count, void* context) -> sf_count_t {
        return static_cast<EncodedOutput*>(context)->write(static_cast<const char*>(bytes), count);
    };
    functions.tell = [](void* context) -> sf_count_t {
        return static_cast<EncodedOutput*>(context)->position_;
    };
    return functions;
}

std::int64_t EncodedOutput::write(const char* bytes, std::int64_t count)
{
    if (!isStarted_) {
        const auto start = static_cast<std::size_t>(position_), size = static_cast<std::size_t>(count);
        header_.resize(std::max(header_.size(), start + size));
        header_.replace(start, size, bytes, size);
    } else if (!isStream_ || position_ >= length_) {
        writeAt(prefixBytes_ + position_, bytes, count);
    }
    position_ += count;
    length_ = std::max(length_, position_);
    return error_ == 0 ? count : 0;
}

void EncodedOutput::writeAt(std::int64_t position, const char* bytes, std::int64_t count)
{
    if (error_ != 0) return;
    if (!isStream_ && lseek(file_, position, SEEK_SET) < 0)
        error_ = errno;
    else
        error_ = writeAll(file_, bytes, static_cast<std::size_t>(count), isStopped_);
}

void EncodedOutput::start(const std::string& prefix)
{
    isStarted_ = true;
    prefixBytes_ = static_cast<std::int64_t>(prefix.size());
    length_ = position_; // an earlier header may have been longer
    header_ = prefix + header_.substr(0, static_cast<std::size_t>(position_));
    writeAt(0, header_.data(), prefixBytes_ + position_);
}

void EncodedOutput::finish(const std::string& prefix)
{
    if (!isStream_ && prefixBytes_ > 0) {
        writeAt(prefixBytes_ + length_, "",
                length_ % 2); // the data of a WAV file has an even number of bytes
        writeAt(0, prefix.data(), prefixBytes_);
    }
    closeFile();
}

void EncodedOutput::closeFile()
{
    if (file_ < 0) return;
    if (close(file_) != 0 && error_ == 0) error_ = errno;
    file_ = -1;
}

} // namespace kvx

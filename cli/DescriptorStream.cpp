#include "cli/DescriptorStream.h"

#include "cli/Output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tesserine::cli {

DescriptorOutput::DescriptorOutput(int descriptor) : descriptor_(descriptor) {
    setp(buffer_.data(), buffer_.data() + buffer_.size());
}

DescriptorOutput::int_type DescriptorOutput::overflow(int_type c) {
    writeAll();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    return traits_type::not_eof(c);
}

int DescriptorOutput::sync() {
    writeAll();
    return 0;
}

void DescriptorOutput::writeAll() {
    const char* next = pbase();
    const char* const end = pptr();
    setp(buffer_.data(), buffer_.data() + buffer_.size());  // after a failure nothing is left over
    while (next < end) {
        const ssize_t written = ::write(descriptor_, next, static_cast<std::size_t>(end - next));
        if (written >= 0) {
            next += written;
        } else if (errno == EPIPE) {
            throw OutputError(OutputError::Kind::closed, "Nobody reads the output any more.");
        } else if (errno != EINTR) {
            const std::string reason = std::generic_category().message(errno);
            throw OutputError(
                OutputError::Kind::failed, "The output could not be written: " + reason + ".");
        }
    }
}

DescriptorInput::DescriptorInput(int descriptor, int wakeDescriptor)
    : descriptor_(descriptor), wakeDescriptor_(wakeDescriptor) {}

bool DescriptorInput::waitForInput() const {
    std::array<pollfd, 2> watched{
        {{.fd = wakeDescriptor_, .events = POLLIN, .revents = 0},
         {.fd = descriptor_, .events = POLLIN, .revents = 0}}};
    while (::poll(watched.data(), watched.size(), -1) < 0) {
        if (errno != EINTR) return false;
    }
    return watched[0].revents == 0;
}

DescriptorInput::int_type DescriptorInput::underflow() {
    while (waitForInput()) {
        const ssize_t count = ::read(descriptor_, buffer_.data(), buffer_.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        setg(buffer_.data(), buffer_.data(), buffer_.data() + count);
        return traits_type::to_int_type(*gptr());
    }
    return traits_type::eof();
}

}  // namespace tesserine::cli

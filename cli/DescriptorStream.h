#pragma once

#include <array>
#include <cstddef>
#include <streambuf>

namespace tesserine::cli {

/// Writes to a file descriptor, with a buffer. What cannot be written is an `OutputError`, which
/// leaves a stream whose `exceptions` hold `badbit`.
class DescriptorOutput final : public std::streambuf {
public:
    explicit DescriptorOutput(int descriptor);

protected:
    int_type overflow(int_type c) override;
    int sync() override;

private:
    void writeAll();

    int descriptor_;
    std::array<char, 65'536> buffer_;
};

/// Reads from a file descriptor, with a buffer. Reading ends early, as at the end of the input, as
/// soon as `wakeDescriptor` becomes readable.
class DescriptorInput final : public std::streambuf {
public:
    DescriptorInput(int descriptor, int wakeDescriptor);

protected:
    int_type underflow() override;

private:
    bool waitForInput() const;

    int descriptor_;
    int wakeDescriptor_;
    std::array<char, 65'536> buffer_;
};

}  // namespace tesserine::cli

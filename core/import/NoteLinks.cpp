#include "core/import/NoteLinks.h"

#include "base/Digest.h"
#include "base/Encoding.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

namespace tesserine {

Uuid importedNoteID(const Uuid& seed, std::string_view name) {
    SHA256 digest;
    digest.update(seed.bytes());
    digest.update(bytesOf(name));
    const SHA256Digest full = digest.finish();
    std::array<std::uint8_t, Uuid::byteCount> bytes{};
    std::copy_n(full.begin(), bytes.size(), bytes.begin());
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0FU) | 0x80U);  // version 8, RFC 9562
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3FU) | 0x80U);
    return Uuid(bytes);
}

std::optional<Uuid> NoteLinks::address(std::size_t note, const Uuid& from) {
    if (note >= settledUpTo_) {
        waiting_[note].push_back(from);
        return expected_[note];
    }
    const auto other = otherwise_.find(note);
    return other == otherwise_.end() ? expected_[note] : other->second.actual;
}

void NoteLinks::foundLink(std::size_t note, const Uuid& from) {
    if (note >= settledUpTo_) {
        waiting_[note].push_back(from);
        return;
    }
    const auto other = otherwise_.find(note);
    if (other != otherwise_.end()) {
        repairs_[from].push_back({expected_[note], other->second.actual});
    }
}

void NoteLinks::settle(std::size_t note, const std::optional<Uuid>& actual) {
    assert(note == settledUpTo_ && "notes are settled in their order");
    settledUpTo_ = note + 1;
    const auto waiting = waiting_.extract(note);
    if (actual == expected_[note]) return;
    otherwise_[note] = {actual};
    if (waiting.empty()) return;
    for (const Uuid& from : waiting.mapped()) {
        repairs_[from].push_back({expected_[note], actual});
    }
}

std::map<Uuid, std::vector<NoteLinks::Repair>> NoteLinks::takeRepairs() {
    return std::exchange(repairs_, {});
}

}  // namespace tesserine

#include "bench/NoteGenerator.h"

#include "bench/GeneratedBody.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace tesserine::bench {
namespace {

constexpr std::size_t wordCount = 4000;
/// Notes are dated in the ten years before 2026.
constexpr Instant newest = Instant::fromSeconds(1'767'225'600);
constexpr std::uint64_t tenYears = 3652ULL * 86'400'000;  // in milliseconds

/// What is at this share of all, sorted by size; in between, sizes grow evenly.
struct Quantile {
    std::size_t permille;
    std::size_t byteCount;
};

/// Bytes of plain text of real notes: half of them below 1 KB, few very long ones.
constexpr std::array bodySizes = {
    Quantile{0, 20},
    Quantile{50, 170},
    Quantile{100, 250},
    Quantile{250, 480},
    Quantile{500, 1000},
    Quantile{750, 2000},
    Quantile{900, 3800},
    Quantile{950, 5500},
    Quantile{990, 11'000},
    Quantile{999, 26'000},
    Quantile{1000, 60'000},
};
constexpr std::array attachmentSizes = {
    Quantile{0, 500},
    Quantile{500, 40'000},
    Quantile{900, 150'000},
    Quantile{1000, 900'000},
};

template <std::size_t count>
std::size_t sizeFrom(const std::array<Quantile, count>& sizes, Dice& dice) {
    const std::size_t thrown = dice.below(1000);
    const auto* above = std::ranges::upper_bound(sizes, thrown, {}, &Quantile::permille);
    const Quantile& high = *above;
    const Quantile& low = *(above - 1);
    // Finer than a thousandth, so that no two notes need be of one size.
    const std::size_t step = (thrown - low.permille) * 1000 + dice.below(1000);
    return low.byteCount
           + (high.byteCount - low.byteCount) * step / ((high.permille - low.permille) * 1000);
}

Uuid uuidFrom(Dice dice) {
    std::array<std::uint8_t, Uuid::byteCount> bytes{};
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(dice.below(256));
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    return Uuid(bytes);
}

/// The place of one of `count` things, the first ones more often.
std::size_t skewedPlace(Dice& dice, std::size_t count) {
    return std::min(dice.below(count), dice.below(count));
}

}  // namespace

Bytes GeneratedAttachment::data() const {
    Dice dice(seed);
    Bytes bytes(byteCount);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(dice.next());
    }
    return bytes;
}

NoteGenerator::NoteGenerator(std::size_t noteCount, std::uint64_t seed)
    : seed_(seed), noteCount_(noteCount), vocabulary_(seed, wordCount) {
    makeNotebooks();
    makeTags();
}

void NoteGenerator::makeNotebooks() {
    Dice dice(seed_, 1);
    const std::size_t count = std::clamp<std::size_t>(noteCount_ / 200, 4, 60);
    while (notebooks_.size() < count) {
        GeneratedNotebook notebook{.name = capitalised(vocabulary_.rareWord(dice))};
        const bool isTop = notebooks_.size() < 3 || dice.chance(400);
        if (!isTop) notebook.parent = dice.below(notebooks_.size());
        notebooks_.push_back(std::move(notebook));
    }
}

void NoteGenerator::makeTags() {
    Dice dice(seed_, 2);
    const std::size_t count = std::clamp<std::size_t>(noteCount_ / 50, 8, 300);
    while (tags_.size() < count) {
        const std::string& name = vocabulary_.rareWord(dice);
        if (std::ranges::find(tags_, name) == tags_.end()) tags_.push_back(name);
    }
}

Uuid NoteGenerator::noteID(std::size_t place) const { return uuidFrom(Dice(~seed_, place)); }

std::string NoteGenerator::makeTitle(Dice& dice) const {
    std::string title = capitalised(vocabulary_.word(dice));
    const std::size_t more = dice.between(1, 6);
    for (std::size_t i = 0; i < more; ++i) {
        title += " " + (dice.chance(300) ? vocabulary_.rareWord(dice) : vocabulary_.word(dice));
    }
    return title;
}

/// More of the notes are young, and most were never touched long after they were made.
void NoteGenerator::placeInTime(Dice& dice, GeneratedNote& note) const {
    const std::uint64_t age = std::min(dice.next() % tenYears, dice.next() % tenYears);
    note.createdAt =
        Instant::fromMilliseconds(newest.milliseconds() - static_cast<std::int64_t>(age));
    std::uint64_t later = 0;
    if (!dice.chance(300)) {
        later = dice.next() % (age + 1);
        later /= dice.between(1, 50);
    }
    note.updatedAt =
        Instant::fromMilliseconds(note.createdAt.milliseconds() + static_cast<std::int64_t>(later));
    if (dice.chance(40)) note.trashedAt = note.updatedAt;
}

void NoteGenerator::placeInLibrary(Dice& dice, GeneratedNote& note) const {
    note.isPinned = dice.chance(20);
    if (dice.chance(850)) note.notebook = skewedPlace(dice, notebooks_.size());
    if (dice.chance(100)) {
        note.sourceURL = "https://www.example.org/page/" + std::to_string(dice.below(100'000));
    }
    const std::size_t tagCount = dice.chance(450) ? 0 : dice.between(1, 4);
    for (std::size_t i = 0; i < tagCount; ++i) {
        note.tags.push_back(skewedPlace(dice, tags_.size()));
    }
    std::ranges::sort(note.tags);
    note.tags.erase(std::unique(note.tags.begin(), note.tags.end()), note.tags.end());
}

void NoteGenerator::attach(Dice& dice, GeneratedNote& note) const {
    if (!dice.chance(60)) return;
    const std::size_t count = dice.between(1, 3);
    for (std::size_t i = 0; i < count; ++i) {
        const bool isPicture = dice.chance(600);
        note.attachments.push_back({
            .id = uuidFrom(Dice(dice.next())),
            .filename = vocabulary_.rareWord(dice) + (isPicture ? ".png" : ".pdf"),
            .type = isPicture ? "image/png" : "application/pdf",
            .byteCount = sizeFrom(attachmentSizes, dice),
            .seed = dice.next(),
        });
    }
}

GeneratedNote NoteGenerator::note(std::size_t place) const {
    assert(place < noteCount_);
    Dice dice(seed_, place + 1000);  // the first thousand are for what there is once
    GeneratedNote note;
    note.id = noteID(place);
    note.title = makeTitle(dice);
    placeInTime(dice, note);
    placeInLibrary(dice, note);
    attach(dice, note);
    GeneratedBody body(dice, vocabulary_, [&]() -> GeneratedBody::Target {
        return {noteID(dice.below(noteCount_)), makeTitle(dice)};
    });
    body.write(sizeFrom(bodySizes, dice));
    for (const GeneratedAttachment& attachment : note.attachments) {
        if (attachment.type == "image/png") {
            body.addPicture(attachment.id);
        } else {
            body.addFile(attachment.id, attachment.filename);
        }
    }
    note.html = body.html();
    note.plainText = body.plainText();
    return note;
}

std::vector<GeneratedNote> NoteGenerator::allNotes() const {
    std::vector<GeneratedNote> notes;
    notes.reserve(noteCount_);
    for (std::size_t place = 0; place < noteCount_; ++place) {
        notes.push_back(note(place));
    }
    return notes;
}

}  // namespace tesserine::bench

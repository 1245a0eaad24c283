#include "core/import/ENEXReader.h"

#include "base/Files.h"
#include "base/Text.h"
#include "core/body/BodyError.h"
#include "core/import/ENEXNoteBuilder.h"
#include "core/import/XMLCleaner.h"
#include "core/import/XMLStream.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <deque>
#include <string>
#include <utility>

namespace tesserine {
namespace {

constexpr std::size_t pieceSize = 65'536;
constexpr std::string_view root = "en-export";
constexpr std::string_view noteTag = "<note>";

std::string grouped(std::uint64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t at = text.size(); at > 3; at -= 3) {
        text.insert(at - 3, 1, ',');
    }
    return text;
}

/// A regular file, read from front to back.
class Source {
public:
    explicit Source(const std::filesystem::path& path) : path_(path) {
        std::error_code error;
        const auto status = std::filesystem::status(path, error);
        if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
            throw FileError::fromErrno(path, "read", EISDIR);
        }
        file_.reset(std::fopen(path.c_str(), "rbe"));
        if (!file_) throw FileError::fromErrno(path, "read", errno);
    }

    /// The next bytes; none at the end.
    std::string_view next() {
        const std::size_t count = std::fread(buffer_.data(), 1, buffer_.size(), file_.get());
        if (count == 0 && std::ferror(file_.get()) != 0) {
            throw FileError::fromErrno(path_, "read", errno);
        }
        return std::string_view(buffer_).substr(0, count);
    }

private:
    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    std::filesystem::path path_;
    std::unique_ptr<std::FILE, Close> file_;
    std::string buffer_ = std::string(pieceSize, '\0');
};

}  // namespace

/// Cuts the stream into notes. Keeps the bytes that it has not passed yet, out of which a note's
/// source is taken.
class ENEXReader::Parser final : public XMLHandler {
public:
    Parser(const std::filesystem::path& file, Files files)
        : name_(text::sanitized(file.filename().string())), files_(files), source_(file) {
        stream_.emplace(*this, 0);
    }

    std::optional<ENEXNote> next() {
        while (ready_.empty() && !hasEnded_) {
            readOn();
        }
        if (ready_.empty()) return std::nullopt;
        ENEXNote note = std::move(ready_.front());
        ready_.pop_front();
        return note;
    }

    void open(std::string_view name, const XMLAttributes& attributes) override {
        if (note_) {
            if (name == "data") keepTo(stream_->position());
            note_->open(name, attributes);
            ++depthInNote_;
            return;
        }
        if (depth_ == 0) isForeign_ = name != root;
        if (name != "note" || depth_ == 0 || isForeign_) {
            ++depth_;
            return;
        }
        dropTo(stream_->position());
        noteBegin_ = begin_;
        note_.emplace(files_);
    }
    void close(std::string_view) override {
        if (!note_) {
            --depth_;
            return;
        }
        if (depthInNote_ == 0) return finishNote();
        --depthInNote_;
        if (note_->isInData()) dropTo(stream_->positionAfter());
        note_->close();
    }
    void text(std::string_view text) override {
        if (note_) note_->text(text);
    }

private:
    void readOn();
    void noteReplaced(std::uint64_t pieceBegin);
    void keepTo(std::uint64_t position);
    void dropTo(std::uint64_t position);
    void finishNote();
    void recover(XMLStream::Trouble trouble);
    void addFailure(std::string sentence);
    std::string sentenceOf(XMLStream::Trouble trouble) const;
    void seekNote();

    // Fixed after construction.
    const std::string name_;
    const Files files_;

    Source source_;
    XMLCleaner cleaner_;
    std::optional<XMLStream> stream_;  // none while a note is looked for after an unreadable place
    std::string unparsed_;             // read, but not given to the stream yet
    std::string passed_;               // given to the stream; neither kept nor dropped is
    std::size_t passedAt_ = 0;         // what stands in it from here on
    std::uint64_t begin_ = 0;          // of that in the file
    std::deque<ENEXNote> ready_;
    std::optional<ENEXNoteBuilder> note_;
    std::uint64_t noteBegin_ = 0;
    std::uint64_t mendedBegin_ = 0;  // where bytes were replaced last
    std::uint64_t mendedEnd_ = 0;
    std::size_t depth_ = 0;        // elements open outside of notes
    std::size_t depthInNote_ = 0;  // and in one
    std::size_t wholeNotes_ = 0;
    std::size_t failures_ = 0;
    bool isForeign_ = true;  // the root, until it is known to be ours
    bool hasEnded_ = false;
};

void ENEXReader::Parser::readOn() {
    const std::string_view bytes = source_.next();
    hasEnded_ = bytes.empty();
    unparsed_ += bytes;
    if (!stream_) seekNote();
    if (!stream_) return;
    const std::string piece = cleaner_.clean(unparsed_, hasEnded_);
    noteReplaced(begin_ + passed_.size() - passedAt_);
    passed_.erase(0, std::exchange(passedAt_, 0));
    passed_.append(unparsed_, 0, piece.size());
    unparsed_.erase(0, piece.size());

    const auto trouble = stream_->feed(piece, hasEnded_);
    const bool isKnownForeign = isForeign_ && (depth_ > 0 || hasEnded_);
    if (isKnownForeign || trouble != XMLStream::Trouble::none) return recover(trouble);
    const bool isKept = note_ && !note_->isInData();
    isKept ? keepTo(stream_->position()) : dropTo(stream_->position());
}

void ENEXReader::Parser::noteReplaced(std::uint64_t pieceBegin) {
    const auto [from, to] = cleaner_.replaced();
    if (from == to) return;
    mendedBegin_ = pieceBegin + from;
    mendedEnd_ = pieceBegin + to;
}

void ENEXReader::Parser::keepTo(std::uint64_t position) {
    const std::uint64_t begin = begin_;
    dropTo(position);
    const auto count = static_cast<std::size_t>(begin_ - begin);
    ENEXNote& note = note_->note();
    if (note.failure) return;
    if (note.source.size() + count > mostSourceBytes) {
        return note_->fail(BodyError::tooLarge().what());
    }
    const auto kept = bytesOf(std::string_view(passed_).substr(passedAt_ - count, count));
    note.source.insert(note.source.end(), kept.begin(), kept.end());
}

void ENEXReader::Parser::dropTo(std::uint64_t position) {
    if (position <= begin_) return;
    const auto count = std::min<std::uint64_t>(position - begin_, passed_.size() - passedAt_);
    passedAt_ += static_cast<std::size_t>(count);
    begin_ += count;
}

void ENEXReader::Parser::finishNote() {
    const std::uint64_t end = stream_->positionAfter();
    keepTo(end);
    note_->note().wasMended = mendedBegin_ < end && mendedEnd_ > noteBegin_;
    ready_.push_back(std::move(note_->note()));
    note_.reset();
    ++wholeNotes_;
}

/// Gives the place up, and looks for the next note after it.
void ENEXReader::Parser::recover(XMLStream::Trouble trouble) {
    addFailure(sentenceOf(trouble));
    const bool isHopeless = isForeign_ || trouble == XMLStream::Trouble::entities;
    if (isHopeless || ++failures_ == mostFailures) {
        hasEnded_ = true;
        return;
    }
    dropTo(stream_->position() + 1);
    unparsed_.insert(0, passed_, passedAt_);
    passed_.clear();
    passedAt_ = 0;
    stream_.reset();
    seekNote();
}

void ENEXReader::Parser::addFailure(std::string sentence) {
    ENEXNote failed{.failure = std::move(sentence)};
    if (note_) failed.title = std::move(note_->note().title);
    if (text::isBlank(failed.title)) failed.title = name_;
    ready_.push_back(std::move(failed));
    note_.reset();
    depthInNote_ = 0;
}

std::string ENEXReader::Parser::sentenceOf(XMLStream::Trouble trouble) const {
    using Trouble = XMLStream::Trouble;
    const std::string file = "“" + name_ + "”";
    if (trouble == Trouble::entities) {
        return file + " declares entities of its own, which may be an attack; it was not imported.";
    }
    if (trouble == Trouble::encoding) {
        return file + " is in an encoding that is not known; save it as UTF-8.";
    }
    if (isForeign_) return file + " is not an Evernote export file.";
    const std::string place = " at byte " + grouped(stream_->position());
    if (trouble == Trouble::truncated) {
        return file + " breaks off" + place + ", after " + grouped(wholeNotes_) + " whole "
               + (wholeNotes_ == 1 ? "note" : "notes") + ".";
    }
    return file + " cannot be read" + place + " (" + stream_->reason()
           + "); it was read on from the next note.";
}

/// Looks for the beginning of a note in what is not parsed, and begins a stream there.
void ENEXReader::Parser::seekNote() {
    const std::size_t found = unparsed_.find(noteTag);
    const bool isFound = found != std::string::npos;
    const std::size_t kept = std::min(unparsed_.size(), noteTag.size() - 1);
    const std::size_t skipped = isFound ? found : unparsed_.size() - kept;
    unparsed_.erase(0, skipped);
    begin_ += skipped;
    if (!isFound) return;
    stream_.emplace(*this, begin_, root, cleaner_.encodingName());
    depth_ = 1;
    hasEnded_ = false;
}

ENEXReader::ENEXReader(const std::filesystem::path& file, Files files)
    : parser_(std::make_unique<Parser>(file, files)) {}

ENEXReader::~ENEXReader() = default;

std::optional<ENEXNote> ENEXReader::next() { return parser_->next(); }

}  // namespace tesserine

#pragma once

#include "base/UserError.h"

#include <string>

namespace tesserine {

/// Why a note could not take what it was given. The note is as it was.
class NoteError final : public UserError {
public:
    enum class Kind { titleTooLong, badLocation };

    static NoteError titleTooLong() {
        return {Kind::titleTooLong, "The title is longer than 10,000 characters."};
    }
    static NoteError badLocation() {
        return {Kind::badLocation, "That is not a place on the globe."};
    }
    Kind kind() const noexcept { return kind_; }

private:
    NoteError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

/// Why a notebook could not be changed. It is as it was.
class NotebookError final : public UserError {
public:
    enum class Kind { duplicateName, badColor };

    static NotebookError duplicateName(const std::string& name) {
        return {Kind::duplicateName, "A notebook called “" + name + "” already exists here."};
    }
    static NotebookError badColor(const std::string& color) {
        return {Kind::badColor, "“" + color + "” is not a colour such as #3366CC."};
    }
    Kind kind() const noexcept { return kind_; }

private:
    NotebookError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

/// Why a tag could not be changed. It is as it was.
class TagError final : public UserError {
public:
    enum class Kind { badColor };

    static TagError badColor(const std::string& color) {
        return {Kind::badColor, "“" + color + "” is not a colour such as #3366CC."};
    }
    Kind kind() const noexcept { return kind_; }

private:
    TagError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

/// Why a file was not attached, or an attachment not saved or found.
class AttachmentError final : public UserError {
public:
    enum class Kind { empty, tooLarge, tooMany, missingData, exists };

    static AttachmentError empty(const std::string& filename) {
        return {Kind::empty, filename + " is empty, so there was nothing to attach."};
    }
    static AttachmentError tooLarge(const std::string& filename) {
        return {
            Kind::tooLarge, filename + " — larger than the 100 MB limit, so it was not attached."};
    }
    static AttachmentError tooMany(const std::string& filename) {
        return {
            Kind::tooMany,
            filename + " was not attached, because a note holds at most 1,000 attachments."};
    }
    static AttachmentError missingData(const std::string& filename) {
        return {
            Kind::missingData, "The content of “" + filename + "” is missing from the library."};
    }
    static AttachmentError exists(const std::string& path) {
        return {Kind::exists, "“" + path + "” already exists."};
    }
    Kind kind() const noexcept { return kind_; }

private:
    AttachmentError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

}  // namespace tesserine

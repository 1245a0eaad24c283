#pragma once

#include "base/UserError.h"

#include <string>

namespace tesserine::cli {

/// Why a command could not do what it was asked; nothing is half done. Exit status 1.
class CommandError final : public UserError {
public:
    enum class Kind {
        noteExists,
        savedSearchExists,
        wouldMakeCycle,
        cannotBeSubtask,
        editorFailed,
        damagedAttachment,
        badInput,
        unknownSetting,
        badSettingValue,
        notSetUp,
        noConflict,
    };

    static CommandError noteExists(const std::string& id) {
        return {Kind::noteExists, "A note with the id " + id + " is there already."};
    }
    static CommandError savedSearchExists(const std::string& name) {
        return {
            Kind::savedSearchExists,
            "A saved search called “" + name
                + "” is there already; --replace gives it this query."};
    }
    static CommandError wouldMakeCycle(const std::string& name) {
        return {
            Kind::wouldMakeCycle, "“" + name + "” cannot be moved into itself or below itself."};
    }
    static CommandError cannotBeSubtask(const std::string& title) {
        return {
            Kind::cannotBeSubtask,
            "“" + title + "” cannot become a subtask: it has subtasks, or it is that task itself."};
    }
    static CommandError editorFailed(const std::string& editor) {
        return {
            Kind::editorFailed,
            "The editor “" + editor + "” did not end well, so nothing was changed."};
    }
    static CommandError damagedAttachment(const std::string& sentence) {
        return {Kind::damagedAttachment, sentence};
    }
    /// Input that a script gave; a full sentence.
    static CommandError badInput(const std::string& sentence) { return {Kind::badInput, sentence}; }
    static CommandError unknownSetting(const std::string& key) {
        return {
            Kind::unknownSetting,
            "There is no setting “" + key + "”; “tesserine settings list” shows them all."};
    }
    /// `expected` completes "… takes".
    static CommandError badSettingValue(const std::string& key, const std::string& expected) {
        return {Kind::badSettingValue, "“" + key + "” takes " + expected + "."};
    }
    /// What the command needs is not there; a full sentence.
    static CommandError notSetUp(const std::string& sentence) { return {Kind::notSetUp, sentence}; }
    static CommandError noConflict(const std::string& title) {
        return {Kind::noConflict, "There is no other version of “" + title + "” to choose."};
    }

    Kind kind() const noexcept { return kind_; }

private:
    CommandError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

}  // namespace tesserine::cli

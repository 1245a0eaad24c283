#pragma once

#include "base/UserError.h"

#include <string>

namespace tesserine {

/// Why a task could not take what it was given. It is as it was.
class TaskError final : public UserError {
public:
    enum class Kind { titleTooLong };

    static TaskError titleTooLong() {
        return {Kind::titleTooLong, "The title is longer than 10,000 characters."};
    }
    Kind kind() const noexcept { return kind_; }

private:
    TaskError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

/// Why a project could not be created, renamed or deleted. Nothing was changed.
class ProjectError final : public UserError {
public:
    enum class Kind { duplicate, emptyName, isInbox };

    static ProjectError duplicate(const std::string& name) {
        return {Kind::duplicate, "A project called “" + name + "” already exists."};
    }
    static ProjectError emptyName() { return {Kind::emptyName, "A project needs a name."}; }
    static ProjectError isInbox() {
        return {Kind::isInbox, "The Inbox cannot be renamed or deleted."};
    }
    Kind kind() const noexcept { return kind_; }

private:
    ProjectError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

/// Why a task template could not be saved, used or found. Nothing was changed.
class TaskTemplateError final : public UserError {
public:
    enum class Kind { needsName, notFound };

    static TaskTemplateError needsName() { return {Kind::needsName, "A template needs a name."}; }
    static TaskTemplateError notFound() {
        return {Kind::notFound, "That template could not be found."};
    }
    Kind kind() const noexcept { return kind_; }

private:
    TaskTemplateError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

}  // namespace tesserine

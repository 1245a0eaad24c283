#pragma once

#include "core/model/NoteEntities.h"

#include <boost/json/object.hpp>

#include <optional>
#include <string>

namespace tesserine::cli {

class JSONFields;
class Session;

/// The operations of `batch`, each one change that is still to be saved.
///
/// Every operation may be repeated: what is there already is left as it is.
class BatchOperations {
public:
    explicit BatchOperations(Session& session) : session_(session) {}

    /// Makes the change that a line asks for in the session's context and returns what the answer
    /// holds besides "ok". Throws `UserError`; the caller then rolls back.
    boost::json::object apply(const boost::json::object& operation);

private:
    enum class Nesting { allowed, refused };
    boost::json::object apply(const boost::json::object& operation, Nesting nesting);

    boost::json::object addNote(JSONFields& fields);
    boost::json::object setNote(JSONFields& fields);
    boost::json::object trashNote(JSONFields& fields);
    boost::json::object restoreNote(JSONFields& fields);
    boost::json::object deleteNote(JSONFields& fields);
    boost::json::object pinNote(JSONFields& fields);
    boost::json::object unpinNote(JSONFields& fields);
    boost::json::object addAttachment(JSONFields& fields);
    boost::json::object addTask(JSONFields& fields);
    boost::json::object completeTask(JSONFields& fields);
    boost::json::object search(JSONFields& fields);
    boost::json::object applyGroup(JSONFields& fields);

    std::optional<std::string> body(JSONFields& fields);
    std::optional<Uuid> newID(JSONFields& fields);
    CDNote& namedNote(JSONFields& fields);

    Session& session_;
};

}  // namespace tesserine::cli

#include "cli/CommandError.h"
#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"

#include <boost/json/array.hpp>

namespace tesserine::cli {

namespace {

std::size_t liveNotesWith(StoreContext& context, CDTag& tag) {
    return context.count<CDNote>(
        {"ANY tags == %@ AND trashedAt == nil AND isTemplate == NO", &tag});
}

ExitStatus addTag(Session& session, const Arguments& arguments) {
    session.holdNames();
    StoreContext& context = session.context();
    CDTag* tag = session.tags().findOrCreate(context, arguments.word(0));
    if (tag == nullptr) throw UsageError::because("A tag needs a name.");
    if (const auto color = arguments.text("color")) session.tags().setColor(*tag, color);
    context.save();
    return answerWithID(session, *tag);
}

ExitStatus listTags(Session& session, const Arguments&) {
    StoreContext& context = session.context();
    const auto rows = session.tags().tree(context, session.collator());
    if (session.output().isJSON()) {
        boost::json::array array;
        for (const auto& row : rows) {
            boost::json::object object = asJSON(*row.object, Detail::header);
            object["noteCount"] = liveNotesWith(context, *row.object);
            array.push_back(std::move(object));
        }
        session.output().json(array);
        return ExitStatus::done;
    }
    if (rows.empty()) session.remark("There are no tags.");
    Table table{
        .columns = {
            {.title = "ID", .style = Style::accent},
            {.title = "NOTES", .isNumber = true},
            {.title = "NAME", .style = Style::strong, .mayShrink = true}}};
    for (const auto& row : rows) {
        table.rows.push_back(
            {shortID(row.object->id),
             std::to_string(liveNotesWith(context, *row.object)),
             std::string(row.depth * 2, ' ') + row.object->name.valueOr("")});
    }
    session.output().table(table);
    return ExitStatus::done;
}

ExitStatus renameTag(Session& session, const Arguments& arguments) {
    session.holdNames();
    StoreContext& context = session.context();
    CDTag& tag = resolveTag(session, arguments.word(0));
    CDTag& left = session.tags().rename(context, tag, arguments.word(1));
    const bool wasMerged = &left != &tag;
    context.save();
    const std::string name = inQuotes(left.name.valueOr(""));
    return answer(
        session, left, wasMerged ? "Merged into " + name + "." : "It is called " + name + ".");
}

ExitStatus moveTag(Session& session, const Arguments& arguments) {
    CDTag& tag = resolveTag(session, arguments.word(0));
    const auto name = arguments.wordIfAny(1);
    CDTag* parent = !name || *name == "none" ? nullptr : &resolveTag(session, *name);
    if (!session.tags().move(tag, parent)) {
        throw CommandError::wouldMakeCycle(tag.name.valueOr(""));
    }
    session.context().save();
    const std::string place =
        parent == nullptr ? "at the top" : "below " + inQuotes(parent->name.valueOr(""));
    return answer(session, tag, inQuotes(tag.name.valueOr("")) + " is now " + place + ".");
}

ExitStatus deleteTag(Session& session, const Arguments& arguments) {
    CDTag& tag = resolveTag(session, arguments.word(0));
    const std::string name = inQuotes(tag.name.valueOr(""));
    session.tags().remove(session.context(), tag);
    session.context().save();
    return answerCount(session, "deleted", 1, "Deleted " + name + "; its notes stay.");
}

ExitStatus pruneTags(Session& session, const Arguments&) {
    const std::size_t count = session.tags().pruneUnused(session.context());
    session.context().save();
    return answerCount(session, "deleted", count, "Deleted " + counted(count, "unused tag") + ".");
}

ExitStatus setTagColor(Session& session, const Arguments& arguments) {
    CDTag& tag = resolveTag(session, arguments.word(0));
    const std::string color = arguments.word(1);
    session.tags().setColor(
        tag, color == "none" ? std::nullopt : std::optional<std::string>(color));
    session.context().save();
    return answer(session, tag, "Its colour is " + tag.colorHex.valueOr("none") + ".");
}

}  // namespace

std::vector<Command> tagCommands() {
    const Argument tag{.name = "TAG"};
    return {
        {.path = "tag add",
         .summary = "Makes a tag, if there is none of this name, and prints its id",
         .access = Access::writes,
         .arguments = {{.name = "NAME"}},
         .options = {{.name = "color", .value = "COLOR", .summary = "Its colour, as #3366CC"}},
         .example = "tesserine tag add urgent --color '#CC3333'",
         .run = addTag},
        {.path = "tag list",
         .summary = "Lists the tags as a tree, with how many notes carry them",
         .example = "tesserine tag list --json",
         .run = listTags},
        {.path = "tag rename",
         .summary = "Gives a tag another name; one that exists takes over its notes",
         .access = Access::writes,
         .arguments = {tag, {.name = "NAME"}},
         .example = "tesserine tag rename todo urgent",
         .run = renameTag},
        {.path = "tag move",
         .summary = "Moves a tag below another one, or to the top",
         .access = Access::writes,
         .arguments = {tag, {.name = "PARENT", .isOptional = true}},
         .details = "Without PARENT, or with “none”, it goes to the top.",
         .example = "tesserine tag move berlin travel",
         .run = moveTag},
        {.path = "tag delete",
         .summary = "Deletes a tag; its notes stay",
         .access = Access::writes,
         .arguments = {tag},
         .example = "tesserine tag delete urgent",
         .run = deleteTag},
        {.path = "tag prune",
         .summary = "Deletes the tags that nothing carries and that have no tags below them",
         .access = Access::writes,
         .example = "tesserine tag prune",
         .run = pruneTags},
        {.path = "tag color",
         .summary = "Sets the colour of a tag, or “none”",
         .access = Access::writes,
         .arguments = {tag, {.name = "COLOR"}},
         .example = "tesserine tag color urgent '#CC3333'",
         .run = setTagColor}};
}

}  // namespace tesserine::cli

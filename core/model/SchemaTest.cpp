#include "core/model/NoteEntities.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

std::string describe(const EntityDescription& entity) {
    std::string text;
    for (const auto& relationship : entity.relationships) {
        text += relationship.name + (relationship.isToMany ? " >> " : " > ");
        text += Schema::library()[relationship.destination].name + "." + relationship.inverseName;
        if (relationship.deleteRule == DeleteRule::cascade) text += " cascade";
        if (relationship.isManyToMany) {
            text += " " + relationship.linkTable + "(" + relationship.linkSource + ","
                    + relationship.linkDestination + ")";
        }
        text += "\n";
    }
    return text;
}

TEST(Schema, RelationshipsMeetInTheSameLinkTableFromBothSides) {
    const Schema& schema = Schema::library();
    EXPECT_EQ(
        describe(schema[EntityKind::note]),
        "notebook > CDNotebook.notes\n"
        "tags >> CDTag.notes Z_CDNOTE_TAGS(ZNOTE,ZTAG)\n"
        "attachments >> CDAttachment.note cascade\n"
        "revisions >> CDNoteRevision.note cascade\n"
        "tasks >> CDTask.linkedNote\n");
    EXPECT_EQ(
        describe(schema[EntityKind::tag]),
        "notes >> CDNote.tags Z_CDNOTE_TAGS(ZTAG,ZNOTE)\n"
        "children >> CDTag.parent\n"
        "parent > CDTag.children\n"
        "tasks >> CDTask.labels Z_CDTASK_LABELS(ZTAG,ZTASK)\n");
}

TEST(Schema, EntityKindsStandAtTheirOwnPlace) {
    std::size_t place = 0;
    for (const EntityDescription& entity : Schema::library().entities()) {
        EXPECT_EQ(static_cast<std::size_t>(entity.kind), place++) << entity.name;
        EXPECT_LE(entity.attributes.size(), 64U) << entity.name;
    }
}

TEST(Schema, IndexedAttributesAreTheOnesListsAndLookupsNeed) {
    std::string indexed;
    for (const EntityDescription& entity : Schema::library().entities()) {
        for (const AttributeDescription& attribute : entity.attributes) {
            if (attribute.isIndexed) indexed += entity.name + "." + attribute.name + " ";
        }
    }
    EXPECT_EQ(
        indexed,
        "CDNote.createdAt CDNote.updatedAt CDNote.isPinned CDNote.trashedAt "
        "CDNote.importFingerprint CDNote.reminderAt CDNote.isTemplate CDNote.favoritedAt "
        "CDNotebook.isFavorite CDTag.name CDAttachment.sha256 CDTask.dueDate "
        "CDSyncState.recordID CDSyncState.needsPush CDSyncMeta.key ");
}

}  // namespace
}  // namespace tesserine

#include "sync/RecordFields.h"

#include "base/JSON.h"

#include <gtest/gtest.h>

#include <set>

namespace tesserine {
namespace {

JSONObject object(const std::string& text) { return *JSONValue::decode(text).object(); }

std::set<std::string> keysOf(EntityKind entity) {
    std::set<std::string> keys;
    for (const RecordField& field : recordFields(entity)) {
        keys.insert(field.key);
    }
    return keys;
}

TEST(RecordFields, AreTheKeysOfTheWireAndNothingThatStaysHere) {
    EXPECT_EQ(
        keysOf(EntityKind::note),
        (std::set<std::string>{
            "title",         "html",        "created_at",         "updated_at",
            "source_url",    "is_pinned",   "favorited_at",       "trashed_at",
            "latitude",      "longitude",   "has_location",       "original_format",
            "imported_from", "reminder_at", "import_fingerprint", "import_metadata",
            "is_template",   "notebook_id", "content_version",    "tag_ids"}));
    const auto file = keysOf(EntityKind::attachment);
    EXPECT_TRUE(file.contains("sha256"));
    EXPECT_TRUE(file.contains("note_id"));
    EXPECT_FALSE(file.contains("file_data"));
    const auto task = keysOf(EntityKind::task);
    for (const char* key : {"parent_id", "project_id", "linked_note_id", "label_ids"}) {
        EXPECT_TRUE(task.contains(key)) << key;
    }
}

TEST(RecordFields, WhatIsNoValueOfItsMemberLeavesThePresentOne) {
    const JSONObject present = object(
        R"({"title":"here","priority":4,"due_date":null,"due_has_time":false,"parent_id":null,)"
        R"("label_ids":[],"sort_index":7})");
    struct Case {
        const char* received;
        const char* key;
        const char* expected;
    };
    for (const auto& [received, key, expected] : {
             Case{R"({"title":5})", "title", "\"here\""},
             Case{R"({"title":null})", "title", "null"},
             Case{R"({"title":"a\u0000b"})", "title", "\"ab\""},
             Case{R"({})", "title", "\"here\""},
             Case{R"({"priority":1})", "priority", "1"},
             Case{R"({"priority":1.5})", "priority", "4"},
             Case{R"({"priority":40000})", "priority", "4"},
             Case{R"({"priority":true})", "priority", "4"},
             Case{R"({"sort_index":9007199254740994})", "sort_index", "7"},
             Case{R"({"sort_index":-1e300})", "sort_index", "7"},
             Case{R"({"due_has_time":"yes"})", "due_has_time", "false"},
             Case{R"({"due_date":"tomorrow"})", "due_date", "null"},
             Case{
                 R"({"due_date":"2026-03-14T10:00:00+01:00"})",
                 "due_date",
                 "\"2026-03-14T09:00:00.000Z\""},
             Case{R"({"parent_id":"../../x"})", "parent_id", "null"},
             Case{
                 R"({"parent_id":"6F9619FF-8B86-D011-B42D-00CF4FC964FF"})",
                 "parent_id",
                 "\"6f9619ff-8b86-d011-b42d-00cf4fc964ff\""},
             Case{R"({"label_ids":{"a":1}})", "label_ids", "[]"},
             Case{
                 R"({"label_ids":["x",1,"6F9619FF-8B86-D011-B42D-00CF4FC964FF",)"
                 R"("6f9619ff-8b86-d011-b42d-00cf4fc964ff",)"
                 R"("0f9619ff-8b86-d011-b42d-00cf4fc964ff"]})",
                 "label_ids",
                 R"(["0f9619ff-8b86-d011-b42d-00cf4fc964ff",)"
                 R"("6f9619ff-8b86-d011-b42d-00cf4fc964ff"])"},
             Case{R"({"newer":{"a":[1]}})", "newer", R"({"a":[1]})"},
         }) {
        const JSONObject result = normalised(EntityKind::task, object(received), present);
        EXPECT_EQ(json::write(result.at(key).toJSON()), expected) << received;
    }
}

TEST(RecordFields, OfTheModelIsSharedWhatEveryDeviceEndsWith) {
    struct Case {
        EntityKind entity;
        const char* name;
        bool isShared;
    };
    for (const auto& [kind, name, expected] : {
             Case{EntityKind::note, "html", true},
             Case{EntityKind::note, "plainText", true},
             Case{EntityKind::note, "tags", true},
             Case{EntityKind::note, "attachments", true},
             Case{EntityKind::note, "revisions", false},
             Case{EntityKind::note, "hasConflict", false},
             Case{EntityKind::note, "originalSource", false},
             Case{EntityKind::attachment, "fileData", true},
             Case{EntityKind::attachment, "thumbnailData", false},
             Case{EntityKind::attachment, "integrityVerified", false},
         }) {
        EXPECT_EQ(isShared(Schema::library()[kind], name), expected) << name;
    }
}

}  // namespace
}  // namespace tesserine

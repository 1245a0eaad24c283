#include "sync/UnresolvedLinks.h"

#include "base/JSON.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <tuple>

namespace tesserine {
namespace {

TEST(UnresolvedLinks, ComeOutOnceForTheirTargetInWhateverOrderTheyCame) {
    test::SeededRandom random(5);
    std::vector<Uuid> ids;
    for (int i = 0; i < 6; ++i) {
        ids.push_back(Uuid::random(random));
    }
    const std::array<std::string, 2> keys{"notebook_id", "tag_ids"};
    const auto anyID = [&] { return ids[random.below(ids.size())]; };
    const auto anyKey = [&] { return keys[random.below(keys.size())]; };

    using Link = std::tuple<Uuid, std::string, Uuid>;  // record, key, target
    std::set<Link> expected;
    UnresolvedLinks links;
    for (int i = 0; i < 3'000; ++i) {
        const Uuid record = anyID();
        const std::string key = anyKey();
        switch (random.below(6)) {
        case 0: {
            links.clear(record, key);
            std::erase_if(expected, [&](const Link& link) {
                return std::get<0>(link) == record && std::get<1>(link) == key;
            });
            break;
        }
        case 1: {
            std::set<Link> taken;
            for (const auto& link : links.take(record)) {
                taken.emplace(link.record, link.key, record);
            }
            std::set<Link> wanted;
            std::ranges::copy_if(
                expected, std::inserter(wanted, wanted.end()), [&](const Link& one) {
                    return std::get<2>(one) == record;
                });
            ASSERT_EQ(taken, wanted) << i;
            std::erase_if(expected, [&](const Link& one) { return wanted.contains(one); });
            break;
        }
        case 2: links = UnresolvedLinks(links.text()); break;
        default: {
            const Uuid target = anyID();
            links.add(record, key, target);
            expected.emplace(record, key, target);
        }
        }
    }
    for (const Uuid& id : ids) {
        links.take(id);
    }
    EXPECT_EQ(links.text(), "{}");
}

TEST(UnresolvedLinks, AreInThePayloadAsIfTheyWereDrawn) {
    const Uuid note = *Uuid::parse("00000000-0000-4000-8000-000000000001");
    const Uuid here = *Uuid::parse("00000000-0000-4000-8000-000000000002");
    const Uuid away = *Uuid::parse("00000000-0000-4000-8000-000000000003");
    UnresolvedLinks links("nonsense");
    links.add(note, "notebook_id", away);
    links.add(note, "tag_ids", away);
    JSONObject payload{
        {"notebook_id", JSONValue()}, {"tag_ids", JSONValue::Array{here.wireText()}}};
    links.complete(note, payload);
    EXPECT_EQ(payload.at("notebook_id"), JSONValue(away.wireText()));
    EXPECT_EQ(payload.at("tag_ids"), JSONValue(JSONValue::Array{here.wireText(), away.wireText()}));

    payload["notebook_id"] = here.wireText();  // chosen here meanwhile
    links.complete(note, payload);
    EXPECT_EQ(payload.at("notebook_id"), JSONValue(here.wireText()));
}

}  // namespace
}  // namespace tesserine

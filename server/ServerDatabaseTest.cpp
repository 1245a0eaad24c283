#include "server/ServerDatabase.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

namespace tesserine::server {
namespace {

TEST(ServerDatabase, WritersShareTransactionsAndFailAlone) {
    const test::TemporaryFolder folder;
    ServerDatabase database(folder.path());
    constexpr int writers = 8;
    constexpr int writes = 40;
    std::atomic<int> failures = 0;
    {
        std::vector<std::jthread> threads;
        for (int writer = 0; writer < writers; ++writer) {
            threads.emplace_back([&, writer] {
                for (int i = 0; i < writes; ++i) {
                    const std::string name = std::to_string(writer) + " " + std::to_string(i);
                    try {
                        const std::string stored = database.transact([&](SQLiteDatabase& writing) {
                            Statement& insert = writing.cached(
                                "INSERT INTO codes (digest, user, expires) VALUES (?, ?, 0)");
                            insert.bindText(1, name);
                            insert.bindText(2, name);
                            insert.step();
                            if (i % 4 == 0) throw std::runtime_error(name);
                            return name;
                        });
                        EXPECT_EQ(stored, name);
                        EXPECT_NE(i % 4, 0);
                    } catch (const std::runtime_error& error) {
                        EXPECT_EQ(error.what(), name) << "its own failure";
                        ++failures;
                    }
                }
            });
        }
    }
    EXPECT_EQ(failures, writers * writes / 4);
    const auto count = database.read(
        [](SQLiteDatabase& reading) { return reading.integer("SELECT COUNT(*) FROM codes"); });
    EXPECT_EQ(count, writers * writes * 3 / 4);
}

TEST(ServerDatabase, AReaderSeesOneStateAndWaitsForNobody) {
    const test::TemporaryFolder folder;
    ServerDatabase database(folder.path());
    const auto add = [&database](const std::string& name) {
        database.transact([&name](SQLiteDatabase& writing) {
            writing.execute(
                "INSERT INTO codes (digest, user, expires) VALUES ('" + name + "', '', 0)");
        });
    };
    const auto countOf = [](SQLiteDatabase& reading) {
        return reading.integer("SELECT COUNT(*) FROM codes");
    };
    add("one");
    database.read([&](SQLiteDatabase& reading) {
        EXPECT_EQ(countOf(reading), 1);
        add("two");
        EXPECT_EQ(countOf(reading), 1);
    });
    EXPECT_EQ(database.read(countOf), 2);
    database.transact([&](SQLiteDatabase&) { EXPECT_EQ(database.read(countOf), 2); });
}

}  // namespace
}  // namespace tesserine::server

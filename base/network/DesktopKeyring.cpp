#include "base/network/DesktopKeyring.h"

#include "base/Deadline.h"

#define SECRET_API_SUBJECT_TO_CHANGE  // how the library wants its item interface to be asked for
#include <libsecret/secret.h>

#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace tesserine {
namespace {

constexpr std::chrono::seconds answerWithin{5};

struct Unreference {
    void operator()(void* object) const { g_object_unref(object); }
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
    void operator()(SecretValue* value) const { secret_value_unref(value); }
};
template <class Object>
using Owned = std::unique_ptr<Object, Unreference>;

const SecretSchema& schema() {
    static const SecretSchema schema = [] {
        SecretSchema described{};
        described.name = "app.tesserine.Secret";
        // A keyring that was not opened since it was started knows hashes of the attributes, but
        // says that every item is of a general kind: by its own it would not be found.
        described.flags = SECRET_SCHEMA_DONT_MATCH_NAME;
        described.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
        described.attributes[1] = {"name", SECRET_SCHEMA_ATTRIBUTE_STRING};
        return described;
    }();
    return schema;
}

/// Where the library writes its error.
class Failure {
public:
    Failure() = default;
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;
    ~Failure() { g_clear_error(&error_); }

    GError** out() { return &error_; }
    /// The message may name what was asked for; domain and number say enough.
    void check() const {
        if (error_ == nullptr) return;
        throw KeychainError(
            std::string(g_quark_to_string(error_->domain)) + " " + std::to_string(error_->code));
    }

private:
    GError* error_ = nullptr;
};

/// One call to the service: ends by itself when the service does not answer.
class Call {
public:
    Call()
        : cancellable_(g_cancellable_new()),
          deadline_(answerWithin),
          end_(deadline_.token(), [this] { g_cancellable_cancel(cancellable_.get()); }) {
        Failure failure;
        const Owned<GDBusConnection> bus(
            g_bus_get_sync(G_BUS_TYPE_SESSION, limit(), failure.out()));
        failure.check();
        // Otherwise a bus that goes away would end the program.
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
        // Anew for every call: the one that the library keeps never finds a service that was
        // started again, because nobody here runs the loop that would tell it.
        service_.reset(secret_service_open_sync(
            SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, limit(), failure.out()));
        failure.check();
    }

    SecretService* service() const { return service_.get(); }
    GCancellable* limit() const { return cancellable_.get(); }

private:
    const Owned<GCancellable> cancellable_;
    Deadline deadline_;
    std::stop_callback<std::function<void()>> end_;
    Owned<SecretService> service_;
};

Owned<GHashTable> attributes(const std::string& service, const std::string& name) {
    Owned<GHashTable> table(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
    g_hash_table_insert(table.get(), g_strdup("service"), g_strdup(service.c_str()));
    g_hash_table_insert(table.get(), g_strdup("name"), g_strdup(name.c_str()));
    return table;
}

/// The open items of that name; throws when there are some and all are locked.
std::vector<Owned<SecretItem>> find(const Call& call, GHashTable* wanted) {
    Failure failure;
    GList* const list = secret_service_search_sync(
        call.service(), &schema(), wanted, SECRET_SEARCH_ALL, call.limit(), failure.out());
    std::vector<Owned<SecretItem>> open;
    bool isLocked = false;
    for (GList* link = list; link != nullptr; link = link->next) {
        Owned<SecretItem> item(static_cast<SecretItem*>(link->data));
        if (secret_item_get_locked(item.get()) != FALSE) {
            isLocked = true;
        } else {
            open.push_back(std::move(item));
        }
    }
    g_list_free(list);
    failure.check();
    if (open.empty() && isLocked) throw KeychainError("the keyring is locked");
    return open;
}

}  // namespace

std::optional<std::string> DesktopKeyring::read(const std::string& name) {
    const Call call;
    const auto items = find(call, attributes(service_, name).get());
    if (items.empty()) return std::nullopt;
    SecretItem* const item = items.front().get();
    Failure failure;
    secret_item_load_secret_sync(item, call.limit(), failure.out());
    failure.check();
    const Owned<SecretValue> value(secret_item_get_secret(item));
    if (!value) throw KeychainError("the keyring gave no secret");
    gsize length = 0;
    const char* const bytes = secret_value_get(value.get(), &length);
    return std::string(bytes, length);
}

void DesktopKeyring::write(const std::string& name, const std::string& secret) {
    const Call call;
    Failure failure;
    const Owned<SecretCollection> collection(secret_collection_for_alias_sync(
        call.service(),
        SECRET_COLLECTION_DEFAULT,
        SECRET_COLLECTION_NONE,
        call.limit(),
        failure.out()));
    failure.check();
    if (!collection) throw KeychainError("there is no default keyring");
    if (secret_collection_get_locked(collection.get()) != FALSE) {
        throw KeychainError("the keyring is locked");
    }
    const Owned<SecretValue> value(
        secret_value_new(secret.data(), static_cast<gssize>(secret.size()), "text/plain"));
    const std::string label = service_ + " " + name;
    const Owned<SecretItem> item(secret_item_create_sync(
        collection.get(),
        &schema(),
        attributes(service_, name).get(),
        label.c_str(),
        value.get(),
        SECRET_ITEM_CREATE_REPLACE,
        call.limit(),
        failure.out()));
    failure.check();
}

void DesktopKeyring::remove(const std::string& name) {
    const Call call;
    for (const auto& item : find(call, attributes(service_, name).get())) {
        Failure failure;
        secret_item_delete_sync(item.get(), call.limit(), failure.out());
        failure.check();
    }
}

}  // namespace tesserine

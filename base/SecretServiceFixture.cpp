#include "base/SecretServiceFixture.h"

#include <gio/gio.h>

#include <algorithm>
#include <future>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace tesserine::test {
namespace {

/// The parts of the secret service interface that libsecret calls.
/// Source: freedesktop.org, Secret Service API Draft 0.2.
constexpr const char* interfaces = R"xml(
<node>
  <interface name="org.freedesktop.Secret.Service">
    <method name="OpenSession">
      <arg type="s" direction="in"/><arg type="v" direction="in"/>
      <arg type="v" direction="out"/><arg type="o" direction="out"/>
    </method>
    <method name="SearchItems">
      <arg type="a{ss}" direction="in"/><arg type="ao" direction="out"/><arg type="ao" direction="out"/>
    </method>
    <method name="Unlock">
      <arg type="ao" direction="in"/><arg type="ao" direction="out"/><arg type="o" direction="out"/>
    </method>
    <method name="ReadAlias">
      <arg type="s" direction="in"/><arg type="o" direction="out"/>
    </method>
    <property name="Collections" type="ao" access="read"/>
  </interface>
  <interface name="org.freedesktop.Secret.Collection">
    <method name="CreateItem">
      <arg type="a{sv}" direction="in"/><arg type="(oayays)" direction="in"/><arg type="b" direction="in"/>
      <arg type="o" direction="out"/><arg type="o" direction="out"/>
    </method>
    <property name="Items" type="ao" access="read"/>
    <property name="Label" type="s" access="read"/>
    <property name="Locked" type="b" access="read"/>
    <property name="Created" type="t" access="read"/>
    <property name="Modified" type="t" access="read"/>
  </interface>
  <interface name="org.freedesktop.Secret.Item">
    <method name="Delete"><arg type="o" direction="out"/></method>
    <method name="GetSecret">
      <arg type="o" direction="in"/><arg type="(oayays)" direction="out"/>
    </method>
    <property name="Attributes" type="a{ss}" access="read"/>
    <property name="Label" type="s" access="read"/>
    <property name="Locked" type="b" access="read"/>
    <property name="Created" type="t" access="read"/>
    <property name="Modified" type="t" access="read"/>
  </interface>
</node>)xml";

constexpr const char* busName = "org.freedesktop.secrets";
constexpr const char* servicePath = "/org/freedesktop/secrets";
constexpr const char* collectionPath = "/org/freedesktop/secrets/collection/login";
constexpr const char* sessionPath = "/org/freedesktop/secrets/session/one";
constexpr const char* noObject = "/";

using Attributes = std::map<std::string, std::string>;

struct Release {
    void operator()(void* object) const { g_object_unref(object); }
    void operator()(GDBusNodeInfo* info) const { g_dbus_node_info_unref(info); }
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
template <class Handle>
using Owned = std::unique_ptr<Handle, Release>;

template <class Handle>
Handle* made(Handle* handle) {
    if (handle == nullptr) throw std::runtime_error("the secret service cannot be set up");
    return handle;
}

Attributes attributesIn(GVariant* table) {
    Attributes attributes;
    GVariantIter iterator;
    const char* name = nullptr;
    const char* value = nullptr;
    g_variant_iter_init(&iterator, table);
    while (g_variant_iter_loop(&iterator, "{&s&s}", &name, &value) != FALSE) {
        attributes[name] = value;
    }
    return attributes;
}

GVariant* tableOf(const Attributes& attributes) {
    GVariantBuilder table;
    g_variant_builder_init(&table, G_VARIANT_TYPE("a{ss}"));
    for (const auto& [name, value] : attributes) {
        g_variant_builder_add(&table, "{ss}", name.c_str(), value.c_str());
    }
    return g_variant_builder_end(&table);
}

GVariant* bytesOf(const std::string& text) {
    return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, text.data(), text.size(), 1);
}

}  // namespace

/// The service itself, on a thread and a connection of its own.
class SecretServiceFixture::Service {
public:
    Service() : bus_(g_test_dbus_new(G_TEST_DBUS_NONE)) { g_test_dbus_up(bus_.get()); }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    ~Service() {
        withdraw();
        g_test_dbus_stop(bus_.get());
    }

    void offer() {
        std::promise<void> isThere;
        thread_ = std::thread([this, &isThere] {
            g_main_context_push_thread_default(context_.get());
            connect();
            isThere.set_value();
            g_main_loop_run(loop_.get());
            g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
            g_main_context_pop_thread_default(context_.get());
        });
        isThere.get_future().wait();
    }
    void withdraw() {
        if (!thread_.joinable()) return;
        g_main_loop_quit(loop_.get());
        thread_.join();
    }

    mutable std::mutex mutex;
    bool isLocked = false;
    bool knowsKinds = true;
    bool isDefault = true;
    int prompts = 0;
    struct Item {
        Attributes attributes;
        std::string secret;
    };
    std::map<std::string, Item> items;  // by object path

private:
    void connect() {
        constexpr auto flags = static_cast<GDBusConnectionFlags>(
            G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
            | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        connection_.reset(made(g_dbus_connection_new_for_address_sync(
            g_test_dbus_get_bus_address(bus_.get()), flags, nullptr, nullptr, nullptr)));
        put(servicePath, "org.freedesktop.Secret.Service");
        put(collectionPath, "org.freedesktop.Secret.Collection");
        for (const auto& [path, item] : items) {
            put(path, "org.freedesktop.Secret.Item");
        }
        const Owned<GVariant> answer(made(g_dbus_connection_call_sync(
            connection_.get(),
            "org.freedesktop.DBus",
            "/org/freedesktop/DBus",
            "org.freedesktop.DBus",
            "RequestName",
            g_variant_new("(su)", busName, 0U),
            nullptr,
            G_DBUS_CALL_FLAGS_NONE,
            -1,
            nullptr,
            nullptr)));
    }

    void put(const std::string& path, const char* interface) {
        static const GDBusInterfaceVTable calls{&Service::called, &Service::asked, nullptr, {}};
        g_dbus_connection_register_object(
            connection_.get(),
            path.c_str(),
            g_dbus_node_info_lookup_interface(node_.get(), interface),
            &calls,
            this,
            nullptr,
            nullptr);
    }

    static void called(
        GDBusConnection*,
        const char*,
        const char* path,
        const char*,
        const char* method,
        GVariant* given,
        GDBusMethodInvocation* call,
        void* self) {
        Service& service = *static_cast<Service*>(self);
        const std::scoped_lock lock(service.mutex);
        GVariant* const answer = service.answer(path, method, given);
        if (answer != nullptr) return g_dbus_method_invocation_return_value(call, answer);
        g_dbus_method_invocation_return_dbus_error(
            call, "org.freedesktop.DBus.Error.NotSupported", "not here");
    }

    static GVariant* asked(
        GDBusConnection*,
        const char*,
        const char* path,
        const char*,
        const char* property,
        GError**,
        void* self) {
        const Service& service = *static_cast<Service*>(self);
        const std::scoped_lock lock(service.mutex);
        const std::string name = property;
        if (name == "Locked") return g_variant_new_boolean(service.isLocked ? TRUE : FALSE);
        if (name == "Label") return g_variant_new_string("a label");
        if (name == "Attributes") return tableOf(service.items.at(path).attributes);
        if (name == "Items") return service.pathsOf(service.items);
        if (name == "Collections") {
            return g_variant_new_objv(&collectionPath, 1);
        }
        return g_variant_new_uint64(0);
    }

    /// Null for what this service does not do.
    GVariant* answer(const std::string& path, const std::string& method, GVariant* given) {
        if (method == "OpenSession") {
            const char* algorithm = nullptr;
            g_variant_get_child(given, 0, "&s", &algorithm);
            if (std::string(algorithm) != "plain") return nullptr;
            return g_variant_new("(vo)", g_variant_new_string(""), sessionPath);
        }
        if (method == "ReadAlias") {
            return g_variant_new("(o)", isDefault ? collectionPath : noObject);
        }
        if (method == "Unlock") {
            ++prompts;
            return g_variant_new("(@aoo)", pathsOf({}), noObject);
        }
        if (method == "SearchItems") {
            const Owned<GVariant> wanted(g_variant_get_child_value(given, 0));
            GVariant* const found = pathsOf(matching(attributesIn(wanted.get())));
            GVariant* const none = pathsOf({});
            return isLocked ? g_variant_new("(@ao@ao)", none, found)
                            : g_variant_new("(@ao@ao)", found, none);
        }
        if (isLocked) return nullptr;
        if (method == "CreateItem") return g_variant_new("(oo)", keep(given).c_str(), noObject);
        if (method == "GetSecret") {
            return g_variant_new(
                "((o@ay@ays))",
                sessionPath,
                bytesOf(""),
                bytesOf(items.at(path).secret),
                "text/plain");
        }
        if (method == "Delete") {
            items.erase(path);
            return g_variant_new("(o)", noObject);
        }
        return nullptr;
    }

    std::map<std::string, Item> matching(const Attributes& wanted) const {
        std::map<std::string, Item> found = items;
        std::erase_if(found, [this, &wanted](const auto& item) {
            Attributes known = item.second.attributes;
            if (!knowsKinds) known["xdg:schema"] = "org.freedesktop.Secret.Generic";
            return !std::ranges::includes(known, wanted);
        });
        return found;
    }

    /// Replaces an item of the same attributes. Returns the item's path.
    std::string keep(GVariant* given) {
        const Owned<GVariant> properties(g_variant_get_child_value(given, 0));
        const Owned<GVariant> table(g_variant_lookup_value(
            properties.get(), "org.freedesktop.Secret.Item.Attributes", G_VARIANT_TYPE("a{ss}")));
        const Owned<GVariant> secret(g_variant_get_child_value(given, 1));
        const Owned<GVariant> value(g_variant_get_child_value(secret.get(), 2));
        gsize length = 0;
        const auto* const bytes =
            static_cast<const char*>(g_variant_get_fixed_array(value.get(), &length, 1));
        const Attributes attributes = attributesIn(made(table.get()));
        const auto present = matching(attributes);
        const bool isNew = present.empty();
        std::string path =
            isNew ? collectionPath + ("/" + std::to_string(++lastItem_)) : present.begin()->first;
        items[path] = {attributes, std::string(bytes, length)};
        if (isNew) put(path, "org.freedesktop.Secret.Item");
        return path;
    }

    static GVariant* pathsOf(const std::map<std::string, Item>& listed) {
        GVariantBuilder paths;
        g_variant_builder_init(&paths, G_VARIANT_TYPE("ao"));
        for (const auto& [path, item] : listed) {
            g_variant_builder_add(&paths, "o", path.c_str());
        }
        return g_variant_builder_end(&paths);
    }

    const Owned<GTestDBus> bus_;
    const Owned<GDBusNodeInfo> node_{made(g_dbus_node_info_new_for_xml(interfaces, nullptr))};
    const Owned<GMainContext> context_{g_main_context_new()};
    const Owned<GMainLoop> loop_{g_main_loop_new(context_.get(), FALSE)};
    Owned<GDBusConnection> connection_;
    int lastItem_ = 0;
    std::thread thread_;
};

SecretServiceFixture::SecretServiceFixture() : service_(std::make_unique<Service>()) {}

SecretServiceFixture::~SecretServiceFixture() = default;

void SecretServiceFixture::offer() { service_->offer(); }

void SecretServiceFixture::withdraw() { service_->withdraw(); }

void SecretServiceFixture::setLocked(bool isLocked) {
    const std::scoped_lock lock(service_->mutex);
    service_->isLocked = isLocked;
    service_->knowsKinds = true;
}

void SecretServiceFixture::lockUnopened() {
    const std::scoped_lock lock(service_->mutex);
    service_->isLocked = true;
    service_->knowsKinds = false;
}

void SecretServiceFixture::setDefault(bool isDefault) {
    const std::scoped_lock lock(service_->mutex);
    service_->isDefault = isDefault;
}

std::string SecretServiceFixture::contents() const {
    const std::scoped_lock lock(service_->mutex);
    std::string text;
    for (const auto& [path, item] : service_->items) {
        text += item.attributes.at("service") + "/" + item.attributes.at("name") + "=" + item.secret
                + ";";
    }
    return text;
}

int SecretServiceFixture::promptCount() const {
    const std::scoped_lock lock(service_->mutex);
    return service_->prompts;
}

}  // namespace tesserine::test

#include "app/account/DevicesSection.h"

#include "app/account/RowList.h"
#include "app/state/DateWords.h"

#include <QVBoxLayout>

namespace tesserine::app {
namespace {

std::vector<DeviceSessionInfo> devicesOf(SyncClient& client, const std::stop_token& stop) {
    std::vector<DeviceSessionInfo> devices;
    for (const JSONValue& session : client.sessions(stop)) {
        if (auto device = DeviceSessionInfo::from(session)) devices.push_back(*std::move(device));
    }
    return devices;
}

}  // namespace

DevicesSection::DevicesSection(AppEnvironment& environment, QWidget* parent)
    : Section(tr("Devices"), environment, parent), rows_(new RowList(tr("Devices"), this)) {
    rows_->setObjectName("devices");
    column().addWidget(rows_);
    connect(rows_, &RowList::pressed, this, &DevicesSection::signOut);
    connect(this, &Section::notAnswered, rows_, &RowList::stopAsking);
    rows_->showAsking();
}

void DevicesSection::refresh() {
    ask<std::vector<DeviceSessionInfo>>(
        devicesOf, [this](const auto& devices) { showDevices(devices); });
}

void DevicesSection::signOut(const QString& id) {
    ask<std::vector<DeviceSessionInfo>>(
        [session = id.toStdString()](SyncClient& client, const std::stop_token& stop) {
            end([&] { client.revokeSession(session, stop); });
            return devicesOf(client, stop);
        },
        [this](const auto& devices) { showDevices(devices); });
}

void DevicesSection::showDevices(const std::vector<DeviceSessionInfo>& devices) {
    std::vector<RowList::Row> rows;
    for (const DeviceSessionInfo& device : devices) {
        RowList::Row row{.title = QString::fromStdString(device.label)};
        if (row.title.isEmpty()) row.title = tr("Unnamed device");
        if (device.isCurrentDevice) {
            row.hint = tr("This computer");
        } else {
            row.button = tr("Sign Out");
            row.id = QString::fromStdString(device.id);
            if (device.lastUsed) {
                row.hint =
                    tr("Last used: %1")
                        .arg(shownTime(
                            *device.lastUsed, environment().now(), environment().calendar()));
            }
        }
        rows.push_back(row);
    }
    rows_->setRows(rows);
}

}  // namespace tesserine::app

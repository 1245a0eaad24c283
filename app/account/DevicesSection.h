#pragma once

#include "app/account/Section.h"
#include "sync/WireRecords.h"

#include <vector>

namespace tesserine::app {

class RowList;

/// The devices that are signed in to the account; all but this one can be signed out.
class DevicesSection final : public Section {
    Q_OBJECT

public:
    DevicesSection(AppEnvironment& environment, QWidget* parent);

    void refresh();

private:
    void signOut(const QString& id);
    void showDevices(const std::vector<DeviceSessionInfo>& devices);

    RowList* const rows_;
};

}  // namespace tesserine::app

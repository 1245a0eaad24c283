#include "app/account/StorageSection.h"

#include "app/account/InfoRow.h"
#include "app/state/DateWords.h"
#include "sync/WireRecords.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int barSteps = 1'000;
constexpr int barHeight = 6;

/// Both meters are filled by one look.
struct Usage {
    SyncStateResponse state;
    BlobUsage files;
};

}  // namespace

StorageSection::StorageSection(AppEnvironment& environment, QWidget* parent)
    : Section(tr("Storage at the service"), environment, parent),
      notes_(addMeter(tr("Notes and tasks, with their history"))),
      files_(addMeter(tr("Files"))) {
    notes_.words->setObjectName("noteStorage");
    files_.words->setObjectName("fileStorage");
}

StorageSection::Meter StorageSection::addMeter(const QString& name) {
    const Meter meter{new InfoRow(name, {}, nullptr, this), new QProgressBar(this)};
    meter.bar->setTextVisible(false);
    meter.bar->setFixedHeight(barHeight);
    meter.bar->setRange(0, barSteps);
    meter.bar->setAccessibleName(name);
    meter.bar->setVisible(false);
    column().addWidget(meter.words);
    column().addWidget(meter.bar);
    return meter;
}

void StorageSection::refresh() {
    ask<Usage>(
        [](SyncClient& client, const std::stop_token& stop) {
            return Usage{client.state(stop), client.blobUsage(stop)};
        },
        [this](const Usage& usage) {
            const auto& state = usage.state;
            std::optional<qint64> notes = state.recordBytes;
            if (notes) *notes += state.revisionBytes.value_or(0);
            showUse(notes_, notes, state.recordQuotaBytes);
            showUse(files_, usage.files.bytes, usage.files.quotaBytes);
        });
}

void StorageSection::showUse(
    const Meter& meter, std::optional<qint64> used, std::optional<qint64> limit) {
    const QString name = meter.bar->accessibleName();
    meter.bar->setVisible(used && limit && *limit > 0);
    if (!used) return meter.words->setTexts(name, tr("The service does not tell."));
    if (!limit) return meter.words->setTexts(name, shownSize(*used));
    meter.words->setTexts(name, tr("%1 of %2").arg(shownSize(*used), shownSize(*limit)));
    const double share = *limit > 0 ? static_cast<double>(*used) / static_cast<double>(*limit) : 1;
    meter.bar->setValue(static_cast<int>(std::clamp(share, 0.0, 1.0) * barSteps));
}

}  // namespace tesserine::app

#pragma once

#include <QDialog>

#include <optional>
#include <string>

class QTableWidget;
class QTabWidget;

namespace tesserine::app {

class AppEnvironment;

/// What leaves this machine for the assistant: the next request to the letter, and the record of
/// those that were sent.
class WhatIsSent final : public QDialog {
    Q_OBJECT

public:
    /// A request that has not been sent yet.
    struct Request {
        std::string body;  ///< JSON, as it goes over the wire
        std::string destination;
    };
    /// Without a request, the record only.
    WhatIsSent(AppEnvironment& environment, const std::optional<Request>& request, QWidget* parent);

signals:
    /// The request that is shown is to be sent.
    void sendingWanted();

private:
    QWidget* makeRequest(const Request& request);
    QWidget* makeRecord();
    void fillRecord();
    void deleteRecord();

    AppEnvironment& environment_;
    QTabWidget* const tabs_;
    QTableWidget* record_ = nullptr;
};

}  // namespace tesserine::app

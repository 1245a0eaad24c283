#include "app/search/ResultsModel.h"

#include "app/search/MarkedLine.h"

#include <algorithm>
#include <utility>

namespace tesserine::app {

void ResultsModel::setResults(std::vector<SearchResult> results) {
    beginResetModel();
    results_ = std::move(results);
    endResetModel();
}

std::optional<int> ResultsModel::rowOf(const Uuid& id) const {
    const auto found =
        std::ranges::find_if(results_, [&](const SearchResult& one) { return one.id == id; });
    if (found == results_.end()) return std::nullopt;
    return static_cast<int>(found - results_.begin());
}

int ResultsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(results_.size());
}

QVariant ResultsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const SearchResult& found = result(index.row());
    const QString title =
        found.title.empty() ? QString("Untitled") : QString::fromStdString(found.title);
    if (role == Qt::DisplayRole) return title;
    if (role == Qt::AccessibleTextRole) {
        const QString kind = found.kind == SearchKind::task ? "Task" : "Note";
        return kind + ": " + title + ". " + MarkedLine(found.snippet).text();
    }
    return {};
}

}  // namespace tesserine::app

#pragma once

#include "search/SearchResponse.h"

#include <QAbstractListModel>

#include <optional>
#include <vector>

namespace tesserine::app {

/// The results of a search.
class ResultsModel final : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    void setResults(std::vector<SearchResult> results);
    std::optional<int> rowOf(const Uuid& id) const;
    const SearchResult& result(int row) const { return results_[static_cast<std::size_t>(row)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    std::vector<SearchResult> results_;
};

}  // namespace tesserine::app

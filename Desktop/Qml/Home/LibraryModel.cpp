#include "Desktop/Qml/Home/LibraryModel.h"

#include <algorithm>

namespace quillmere {
namespace {

constexpr int refreshMilliseconds = 1000;

}  // namespace

LibraryModel::LibraryModel(DesktopPhotoLibrary& library, QObject* parent)
    : QAbstractListModel(parent), library_(library) {
    refresh_.setInterval(refreshMilliseconds);
    connect(&refresh_, &QTimer::timeout, this, &LibraryModel::lookAgain);
}

void LibraryModel::setActive(bool active) {
    if (active == isActive()) return;
    beginResetModel();
    pages_.clear();
    selected_.clear();
    count_ = 0;
    endResetModel();
    active ? refresh_.start() : refresh_.stop();
    if (active) lookAgain();
    emit activeChanged();
    emit selectionChanged();
}

void LibraryModel::lookAgain() {
    const auto counted = library_.count(kind());
    const int count = counted ? static_cast<int>(*counted) : 0;
    if (count == count_) return;
    beginResetModel();
    pages_.clear();
    count_ = count;
    endResetModel();
    emit countChanged();
}

int LibraryModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count_;
}

const LibraryAsset* LibraryModel::assetAt(int row) const {
    const int page = row / pageSize;
    auto found = pages_.find(page);
    if (found == pages_.end()) {
        auto assets = library_.assets(kind(), static_cast<std::size_t>(page) * pageSize, pageSize);
        if (!assets) return nullptr;
        found = pages_.emplace(page, *std::move(assets)).first;
    }
    const auto inPage = static_cast<std::size_t>(row % pageSize);
    return inPage < found->second.size() ? &found->second[inPage] : nullptr;
}

QVariant LibraryModel::data(const QModelIndex& index, int role) const {
    const LibraryAsset* asset = index.isValid() ? assetAt(index.row()) : nullptr;
    if (!asset) return {};
    switch (role) {
        case IdentifierRole:
            return QString::fromStdString(asset->asset.localIdentifier);
        case NameRole:
            return QString::fromStdString(asset->path.filename().string());
        case NumberRole: {
            const auto at =
                std::find(selected_.begin(), selected_.end(), asset->asset.localIdentifier);
            return at == selected_.end() ? 0 : static_cast<int>(at - selected_.begin()) + 1;
        }
        default:
            return {};
    }
}

QHash<int, QByteArray> LibraryModel::roleNames() const {
    return {{IdentifierRole, "identifier"}, {NameRole, "name"}, {NumberRole, "number"}};
}

void LibraryModel::toggle(int row) {
    const LibraryAsset* asset = assetAt(row);
    if (!asset) return;
    const auto at = std::find(selected_.begin(), selected_.end(), asset->asset.localIdentifier);
    if (at == selected_.end()) {
        selected_.push_back(asset->asset.localIdentifier);
    } else {
        selected_.erase(at);
    }
    emit dataChanged(index(0), index(count_ - 1), {NumberRole});
    emit selectionChanged();
}

void LibraryModel::selectOnly(int row) {
    selected_.clear();
    toggle(row);
}

}  // namespace quillmere

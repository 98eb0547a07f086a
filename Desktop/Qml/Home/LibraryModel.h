// The photo library as a list that a grid shows, with the user's selection.
#pragma once

#include <QAbstractListModel>
#include <QTimer>
#include <map>
#include <optional>
#include <vector>

#include "Desktop/Photos/DesktopPhotoLibrary.h"

namespace quillmere {

/// Rows are fetched as they are seen. While `isActive`, it follows the library.
class LibraryModel final : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(bool isActive READ isActive WRITE setActive NOTIFY activeChanged)
    Q_PROPERTY(bool videos MEMBER videos_ NOTIFY activeChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(int selectionCount READ selectionCount NOTIFY selectionChanged)

public:
    enum Role { IdentifierRole = Qt::UserRole, NameRole, NumberRole };

    explicit LibraryModel(DesktopPhotoLibrary& library, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    bool isActive() const { return refresh_.isActive(); }
    void setActive(bool active);
    int count() const { return count_; }
    int selectionCount() const { return static_cast<int>(selected_.size()); }

    /// Takes a row into the selection, after those before it, or out of it.
    Q_INVOKABLE void toggle(int row);
    /// The selection becomes that row alone.
    Q_INVOKABLE void selectOnly(int row);

    /// Identifiers in the order of their selection.
    const std::vector<std::string>& selected() const { return selected_; }

signals:
    void activeChanged();
    void countChanged();
    void selectionChanged();

private:
    static constexpr int pageSize = 128;

    void lookAgain();
    const LibraryAsset* assetAt(int row) const;
    std::optional<PHAssetMediaType> kind() const {
        return videos_ ? PHAssetMediaType::video : PHAssetMediaType::image;
    }

    DesktopPhotoLibrary& library_;
    bool videos_ = false;
    int count_ = 0;
    mutable std::map<int, std::vector<LibraryAsset>> pages_;
    std::vector<std::string> selected_;
    QTimer refresh_;
};

}  // namespace quillmere

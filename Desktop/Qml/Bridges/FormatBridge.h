// The sheet of formats.
#pragma once

#include <QVariantList>

#include "Desktop/Qml/Bridges/Bridge.h"
#include "Quillmere/Views/Detail/ImageFormatSelectionView.h"

namespace quillmere {

class FormatBridge final : public Bridge {
    Q_OBJECT
    /// {name, descriptionKey, isSelected}
    Q_PROPERTY(QVariantList rows READ rows NOTIFY changed)
    Q_PROPERTY(bool keepsDate READ keepsDate WRITE setKeepsDate NOTIFY changed)
    Q_PROPERTY(bool keepsPlace READ keepsPlace WRITE setKeepsPlace NOTIFY changed)

public:
    FormatBridge(UserDefaults& userDefaults, Published<bool>& isPresented)
        : view_(userDefaults, isPresented) {
        watch(view_.selectedFormat, &FormatBridge::changed);
        watch(view_.preserveCreationDate, &FormatBridge::changed);
        watch(view_.preserveLocation, &FormatBridge::changed);
    }

    QVariantList rows() const {
        QVariantList rows;
        for (const auto& row : ImageFormatSelectionView::formatRows) {
            rows.push_back(QVariantMap{{"name", row.name},
                                       {"descriptionKey", row.descriptionKey},
                                       {"isSelected", row.format == view_.selectedFormat.get()}});
        }
        return rows;
    }
    bool keepsDate() const { return view_.preserveCreationDate.get(); }
    void setKeepsDate(bool keeps) { view_.preserveCreationDate.set(keeps); }
    bool keepsPlace() const { return view_.preserveLocation.get(); }
    void setKeepsPlace(bool keeps) { view_.preserveLocation.set(keeps); }

    Q_INVOKABLE void select(int row) {
        view_.selectedFormat.set(
            ImageFormatSelectionView::formatRows.at(static_cast<std::size_t>(row)).format);
    }
    Q_INVOKABLE void done() { view_.doneTapped(); }

signals:
    void changed();

private:
    ImageFormatSelectionView view_;
};

}  // namespace quillmere

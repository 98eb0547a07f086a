// The sheet on which the user chooses what becomes of a picture, a video or a text.
#pragma once

#include <QMimeData>
#include <QObject>
#include <QStringList>
#include <QUrl>
#include <memory>
#include <optional>
#include <vector>

#include "Base/Result.h"
#include "Desktop/FileManager/TemporaryDirectory.h"
#include "Desktop/Qml/Pictures/Picture.h"
#include "Desktop/Qml/Platform/QtAlert.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Localization/Localization.h"
#include "Platform/Sharing/UIActivityViewController.h"

namespace quillmere {

/// Main thread. QML shows it while `isShown`, with what this system can do. What fails is told by
/// an alert, and the sheet stays for another try. Files that it hands out lie in a folder of their
/// own until the process ends, as whoever takes them may look at them late; the next process
/// removes them.
class ShareSheet final : public QObject, public UIActivityViewController {
    Q_OBJECT
    Q_PROPERTY(bool isShown READ isShown NOTIFY changed)
    /// In their order: "copy", "saveAs", "showInFolder", "openWith", "mail".
    Q_PROPERTY(QStringList actions READ actions NOTIFY changed)
    /// A name for the file that "saveAs" makes.
    Q_PROPERTY(QString suggestedName READ suggestedName NOTIFY changed)

public:
    ShareSheet(FileManager& fileManager, ImageIO& imageIO, const Localization& localization,
               QtAlert& alert)
        : fileManager_(fileManager),
          imageIO_(imageIO),
          localization_(localization),
          alert_(alert) {}

    void present(std::vector<ActivityItem> items, UIViewController& presenter) override;

    bool isShown() const { return item_.has_value(); }
    QStringList actions() const;
    QString suggestedName() const;

    Q_INVOKABLE void copy();
    Q_INVOKABLE void saveAs(const QUrl& file);
    Q_INVOKABLE void showInFolder();
    Q_INVOKABLE void openWith();
    Q_INVOKABLE void mail();
    Q_INVOKABLE void close();
    /// Ends when the user lets go of it. Without a sheet.
    Q_INVOKABLE void drag(const quillmere::Picture& picture);

signals:
    void changed();

private:
    /// The item as a file to hand out. The item is no text.
    Result<std::filesystem::path> file();
    /// The same one again for the same picture.
    Result<std::filesystem::path> fileOf(const UIImage& picture);
    /// A work file under a second name, which stays when the first one goes.
    Result<std::filesystem::path> linkTo(const std::filesystem::path& workFile);
    /// For one file, so that it can have the name that others are to see.
    Result<std::filesystem::path> makeFolder();
    Result<void> writeTo(const std::filesystem::path& target);
    /// Its pixels and its file.
    std::unique_ptr<QMimeData> dataOf(const UIImage& picture);

    /// Closes the sheet, or tells why not.
    void end(const Result<void>& outcome);

    FileManager& fileManager_;
    ImageIO& imageIO_;
    const Localization& localization_;
    QtAlert& alert_;
    std::optional<ActivityItem> item_;
    Picture madeOf_;
    std::filesystem::path madeFile_;
    TemporaryDirectory handedOut_;
};

}  // namespace quillmere

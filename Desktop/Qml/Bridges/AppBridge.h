// The root of what QML sees: the screens that are there, and the texts.
#pragma once

#include <QVariantList>
#include <QVariantMap>
#include <memory>

#include "Base/FormatString.h"
#include "Desktop/Qml/Bridges/AdBridge.h"
#include "Desktop/Qml/Bridges/DetailBridge.h"
#include "Desktop/Qml/Bridges/HomeBridge.h"
#include "Desktop/Qml/Bridges/PreviewBridge.h"
#include "Desktop/Qml/Bridges/SettingsBridge.h"
#include "Desktop/Qml/Bridges/ShareBridge.h"
#include "Desktop/Qml/Platform/QtAlert.h"
#include "Desktop/Qml/Platform/ShareSheet.h"

namespace quillmere {

/// Makes the bridge of a screen when the logic says that it is there, and lets it go afterwards.
class AppBridge final : public Bridge {
    Q_OBJECT
    Q_PROPERTY(quillmere::HomeBridge* home READ home CONSTANT)
    Q_PROPERTY(quillmere::DetailBridge* detail READ detail NOTIFY detailChanged)
    Q_PROPERTY(quillmere::PreviewBridge* preview READ preview NOTIFY previewChanged)
    Q_PROPERTY(quillmere::ShareBridge* share READ share NOTIFY shareChanged)
    Q_PROPERTY(quillmere::SettingsBridge* settings READ settings NOTIFY settingsChanged)
    Q_PROPERTY(quillmere::ReportBridge* report READ report NOTIFY reportChanged)
    Q_PROPERTY(quillmere::ShareSheet* shareSheet READ shareSheet CONSTANT)
    Q_PROPERTY(quillmere::AlertBridge* alert READ alert CONSTANT)
    Q_PROPERTY(quillmere::AdBridge* ads READ ads CONSTANT)
    /// "light", "dark", or empty to follow the system: `$QUILLMERE_APPEARANCE`.
    Q_PROPERTY(QString appearance READ appearance CONSTANT)
    /// Built-in pictures, as addresses for QML.
    Q_PROPERTY(QUrl sampleIllustration READ sampleIllustration CONSTANT)
    Q_PROPERTY(QUrl samplePhoto READ samplePhoto CONSTANT)
    /// Of {title, icon}.
    Q_PROPERTY(QVariantList moreApps READ moreApps CONSTANT)
    /// The measures that the logic gives the overlays of work, by their names there.
    Q_PROPERTY(QVariantMap conversionMeasures READ conversionMeasures CONSTANT)
    Q_PROPERTY(QVariantMap loadingMeasures READ loadingMeasures CONSTANT)
    /// Which ways out lead anywhere in this edition, so that screens show no others: "mail",
    /// "inquiry", "invitation", "review", "moreApps".
    Q_PROPERTY(QVariantMap offers READ offers CONSTANT)

public:
    /// How the application puts a screen together.
    struct Screens {
        std::function<std::unique_ptr<DetailView>(DetailInput)> detail;
        DetailBridge::MakeBanner banner;
        std::function<std::shared_ptr<VideoPreviewViewModel>(std::filesystem::path)> preview;
        SharePorts share;
        SettingsView::Ports settings;
        MailView::Ports mail;
        ReportFormView::Ports report;
        AdBridge::Ports ads;
    };
    AppBridge(const HomeBridge::Ports& home, Screens screens, UserDefaults& userDefaults,
              const Localization& localization, const Bundles& bundles, ShareSheet& shareSheet,
              QtAlert& alert);

    HomeBridge* home() { return &home_; }
    DetailBridge* detail() const { return detail_.get(); }
    PreviewBridge* preview() const { return preview_.get(); }
    ShareBridge* share() const { return share_.get(); }
    SettingsBridge* settings() const { return settings_.get(); }
    ReportBridge* report() const { return report_.get(); }
    ShareSheet* shareSheet() const { return &shareSheet_; }
    AlertBridge* alert() { return &alert_; }
    AdBridge* ads() { return &ads_; }
    QVariantList moreApps() const;
    QVariantMap conversionMeasures() const;
    QVariantMap loadingMeasures() const;
    QVariantMap offers() const;
    QString appearance() const { return qEnvironmentVariable("QUILLMERE_APPEARANCE"); }
    QUrl sampleIllustration() const { return sampleAt(HomeView::illustration); }
    QUrl samplePhoto() const { return sampleAt(HomeView::photo); }

    /// The text of a key in the user's language.
    Q_INVOKABLE QString text(const QString& key) const {
        return qt(localization_.localizedString(key.toStdString()));
    }
    /// Likewise, with values for its placeholders.
    Q_INVOKABLE QString text(const QString& key, const QString& first,
                             const QString& second = {}) const {
        return qt(formatString(localization_.localizedString(key.toStdString()),
                               {first.toStdString(), second.toStdString()}));
    }
    /// Back from the detail screen to the home screen. Where that would end work, the user is asked
    /// first.
    Q_INVOKABLE void back();
    /// Whether the window may close now. Where that would end work, the user is asked, and
    /// `closeAgreed` follows a yes.
    Q_INVOKABLE bool mayClose();
    /// Files from outside: those of a start, or a second one. Leads back to the home screen first.
    void openFiles(const QList<QUrl>& files);
    /// "13%" for 0.125.
    Q_INVOKABLE static QString percentage(double fraction);

signals:
    void closeAgreed();
    void detailChanged();
    void previewChanged();
    void shareChanged();
    void settingsChanged();
    void reportChanged();

private:
    QUrl sampleAt(const HomeView::Sample& sample) const;
    void updateDetail();
    void updatePreview();
    void updateShare();
    void updateSettings();
    void updateReport();

    HomeView& homeView_;
    const Screens screens_;
    UserDefaults& userDefaults_;
    const Localization& localization_;
    const Bundles& bundles_;
    ShareSheet& shareSheet_;
    HomeBridge home_;
    AlertBridge alert_;
    AdBridge ads_;
    std::unique_ptr<DetailBridge> detail_;
    std::unique_ptr<PreviewBridge> preview_;
    std::unique_ptr<ShareBridge> share_;
    std::unique_ptr<SettingsBridge> settings_;
    std::unique_ptr<ReportBridge> report_;
};

}  // namespace quillmere

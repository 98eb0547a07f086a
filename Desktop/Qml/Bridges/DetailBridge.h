// The detail screen.
#pragma once

#include <QSizeF>
#include <QVariantList>
#include <functional>
#include <memory>

#include "Desktop/Qml/Bridges/AlertBridge.h"
#include "Desktop/Qml/Bridges/FormatBridge.h"
#include "Desktop/Qml/Pictures/Picture.h"
#include "Platform/AdLibrary/GADBannerView.h"
#include "Quillmere/Views/Detail/DetailView.h"

namespace quillmere {

/// Made with its screen, and gone with it.
class DetailBridge final : public Bridge {
    Q_OBJECT
    Q_PROPERTY(quillmere::Picture source READ source CONSTANT)
    Q_PROPERTY(quillmere::Picture result READ result NOTIFY resultChanged)
    Q_PROPERTY(QStringList linesWithoutResult READ linesWithoutResult NOTIFY resultChanged)
    Q_PROPERTY(QString sourceSize READ sourceSize CONSTANT)
    Q_PROPERTY(QString resultSize READ resultSize NOTIFY resultChanged)
    Q_PROPERTY(bool isVideo READ isVideo CONSTANT)
    /// Empty where the source is not too big.
    Q_PROPERTY(QString tooBigNotice READ tooBigNotice NOTIFY resultChanged)
    Q_PROPERTY(double slider READ slider NOTIFY sliderChanged)
    /// Rows of {style, text, isSelected, isGray}.
    Q_PROPERTY(QVariantList styleRows READ styleRows NOTIFY resultChanged)
    Q_PROPERTY(QString formatName READ formatName NOTIFY formatChanged)
    Q_PROPERTY(QString mainButton READ mainButton CONSTANT)
    Q_PROPERTY(bool isConverting READ isConverting NOTIFY coverChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY coverChanged)
    Q_PROPERTY(double conversionProgress READ conversionProgress NOTIFY progressChanged)
    /// Below zero while there is none.
    Q_PROPERTY(double videoProgress READ videoProgress NOTIFY progressChanged)
    Q_PROPERTY(QString loadingTitle READ loadingTitle NOTIFY coverChanged)
    Q_PROPERTY(QStringList progressLines READ progressLines NOTIFY coverChanged)
    Q_PROPERTY(bool isStopping READ isStopping NOTIFY coverChanged)
    Q_PROPERTY(quillmere::AlertBridge* question READ question CONSTANT)
    /// In points.
    Q_PROPERTY(double minimumDragDistance READ minimumDragDistance CONSTANT)
    Q_PROPERTY(double formatSheetHeight READ formatSheetHeight CONSTANT)
    Q_PROPERTY(bool showsSettings READ showsSettings WRITE setShowsSettings NOTIFY sheetsChanged)
    Q_PROPERTY(quillmere::FormatBridge* format READ format NOTIFY sheetsChanged)
    Q_PROPERTY(bool showsShareView READ showsShareView NOTIFY shareChanged)
    Q_PROPERTY(bool showsVideoPreview READ showsVideoPreview NOTIFY previewChanged)
    Q_PROPERTY(bool showsBanner READ showsBanner NOTIFY bannerChanged)
    Q_PROPERTY(quillmere::AlertBridge* alert READ alert CONSTANT)

public:
    using MakeBanner = std::function<std::shared_ptr<GADBannerView>()>;

    DetailBridge(std::unique_ptr<DetailView> view, MakeBanner makeBanner,
                 UserDefaults& userDefaults, QObject* parent = nullptr);

    DetailView& view() { return *view_; }

    Picture source() const { return {view_->vm().originalImage}; }
    Picture result() const { return {view_->result()}; }
    QStringList linesWithoutResult() const { return listOf(view_->linesWithoutResult()); }
    QString sourceSize() const { return qt(view_->sourceSize()); }
    QString resultSize() const { return qt(view_->resultSize()); }
    bool isVideo() const { return view_->isVideo(); }
    QString tooBigNotice() const { return qt(view_->tooBigNotice().value_or(std::string())); }
    double slider() const { return view_->sliderPosition.get(); }
    QVariantList styleRows() const;
    QString formatName() const { return view_->formatName(); }
    QString mainButton() const { return view_->mainButtonKey(); }
    bool isConverting() const { return view_->cover() == DetailView::Cover::conversion; }
    bool isLoading() const { return view_->cover() == DetailView::Cover::loading; }
    double conversionProgress() const { return view_->vm().imageConversionProgress.get(); }
    double videoProgress() const { return view_->progressDisplay.get().value_or(-1.0F); }
    bool showsSettings() const { return view_->showingSettingsView.get(); }
    void setShowsSettings(bool shows) { view_->showingSettingsView.set(shows); }
    FormatBridge* format() const { return format_.get(); }
    bool showsShareView() const { return view_->showsShareView(); }
    bool showsVideoPreview() const { return view_->showsVideoPreview(); }
    bool showsBanner() const { return view_->showBannerAds.get(); }
    AlertBridge* alert() { return &alert_; }
    QString loadingTitle() const { return qt(view_->loadingTitle()); }
    QStringList progressLines() const { return listOf(view_->progressLines()); }
    bool isStopping() const { return view_->isStopping.get(); }
    AlertBridge* question() { return &question_; }
    double minimumDragDistance() const { return DetailView::minimumDragDistance; }
    double formatSheetHeight() const { return ImageFormatSelectionView::height; }

    Q_INVOKABLE void stopTapped() { view_->stopTapped(); }
    Q_INVOKABLE void appear() { view_->appear(); }
    Q_INVOKABLE void disappear() { view_->disappear(); }
    Q_INVOKABLE void dragDivider(double x, double width, bool rightToLeft) {
        view_->dragDivider(x, width, rightToLeft);
    }
    Q_INVOKABLE void styleTapped(int style);
    Q_INVOKABLE void formatTapped() { view_->formatTapped(); }
    Q_INVOKABLE void closeFormat() { view_->showingImageFormatSelection.set(false); }
    Q_INVOKABLE void mainButtonTapped();
    Q_INVOKABLE void resolutionLimitTapped() { view_->resolutionLimitTapped(); }
    /// Once it is closed, what was pressed before that was seen doesn't open it again.
    Q_INVOKABLE void closeShare() {
        if (view_->showsShareView()) view_->shareBackgroundTapped();
    }
    Q_INVOKABLE void closePreview() { view_->vm().isShowingVideoPreview.set(false); }

signals:
    void resultChanged();
    void sliderChanged();
    void formatChanged();
    void coverChanged();
    void progressChanged();
    void sheetsChanged();
    void shareChanged();
    void previewChanged();
    void bannerChanged();

private:
    /// The column takes no taps from the moment that the logic says so, though that is drawn later.
    bool isCovered() const { return view_->cover() != DetailView::Cover::none; }
    static QStringList listOf(const std::vector<std::string>& lines);
    void updateFormat();
    void updateBanner();

    std::unique_ptr<DetailView> view_;
    const MakeBanner makeBanner_;
    std::shared_ptr<GADBannerView> banner_;
    UserDefaults& userDefaults_;
    std::unique_ptr<FormatBridge> format_;
    AlertBridge alert_;
    AlertBridge question_;
};

}  // namespace quillmere

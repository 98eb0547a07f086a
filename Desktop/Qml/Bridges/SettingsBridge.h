// The settings and the inquiry form.
#pragma once

#include <memory>

#include "Desktop/Qml/Bridges/AlertBridge.h"
#include "Quillmere/Views/Settings/ReportFormView.h"
#include "Quillmere/Views/Settings/SettingsView.h"

namespace quillmere {

/// Made each time the sheet opens.
class SettingsBridge final : public Bridge {
    Q_OBJECT
    Q_PROPERTY(int limitIndex READ limitIndex WRITE setLimitIndex NOTIFY limitChanged)
    Q_PROPERTY(bool showsReport READ showsReport WRITE setShowsReport NOTIFY reportChanged)
    Q_PROPERTY(quillmere::AlertBridge* alert READ alert CONSTANT)

public:
    SettingsBridge(const SettingsView::Ports& ports, const MailView::Ports& mail)
        : view_(ports), mail_(mail, view_.isShowingMailView, view_.result), alert_(view_.alert) {
        watch(view_.resolutionLimitIndex, &SettingsBridge::limitChanged);
        watch(view_.isShowingBugReportView, &SettingsBridge::reportChanged);
        watch(view_.isShowingMailView, &SettingsBridge::updateMail);
    }

    int limitIndex() const { return static_cast<int>(view_.resolutionLimitIndex.get()); }
    void setLimitIndex(int index) { view_.resolutionLimitIndex.set(index); }
    bool showsReport() const { return view_.isShowingBugReportView.get(); }
    void setShowsReport(bool shows) { view_.isShowingBugReportView.set(shows); }
    AlertBridge* alert() { return &alert_; }

    Q_INVOKABLE void shareToFriendsTapped() { view_.shareToFriendsTapped(); }
    Q_INVOKABLE void bugReportTapped() { view_.bugReportTapped(); }
    Q_INVOKABLE void contactTapped() { view_.contactTapped(); }
    Q_INVOKABLE void moreAppsTapped() { view_.moreAppsTapped(); }
    Q_INVOKABLE void writeReviewTapped() { view_.writeReviewTapped(); }
    Q_INVOKABLE void moreAppTapped(int index) {
        view_.moreAppTapped(static_cast<std::size_t>(index));
    }

signals:
    void limitChanged();
    void reportChanged();

private:
    void updateMail() {
        if (view_.isShowingMailView.get()) mail_.present();
    }

    SettingsView view_;
    MailView mail_;
    AlertBridge alert_;
};

/// Made each time the form opens.
class ReportBridge final : public Bridge {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(bool canSend READ canSend NOTIFY textChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY loadingChanged)
    Q_PROPERTY(quillmere::AlertBridge* alert READ alert CONSTANT)

public:
    explicit ReportBridge(const ReportFormView::Ports& ports)
        : view_(std::make_shared<ReportFormView>(ports)), alert_(view_->alert) {
        watch(view_->text, &ReportBridge::textChanged);
        watch(view_->isLoading, &ReportBridge::loadingChanged);
        watch(view_->dismissed, &ReportBridge::dismissed);
    }

    QString text() const { return qt(view_->text.get()); }
    void setText(const QString& text) {
        if (text != this->text()) view_->text.set(text.toStdString());
    }
    bool canSend() const { return view_->canSend(); }
    bool isLoading() const { return view_->isLoading.get(); }
    AlertBridge* alert() { return &alert_; }

    Q_INVOKABLE void sendTapped() { view_->sendTapped(); }

signals:
    void textChanged();
    void loadingChanged();
    void dismissed();

private:
    std::shared_ptr<ReportFormView> view_;
    AlertBridge alert_;
};

}  // namespace quillmere

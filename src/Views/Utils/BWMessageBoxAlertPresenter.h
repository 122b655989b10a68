// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Utils/BWUIUtils.h"

#include <functional>

class BWLocalizationManager;
class QMessageBox;
class QWidget;

/// Shows alerts as message boxes over the active window, or over the main window if none of ours is active. GUI thread.
class BWMessageBoxAlertPresenter : public BWAlertPresenter {
public:
    /// `window` returns the main window, or null while there is none. The manager must outlive the presenter.
    explicit BWMessageBoxAlertPresenter(BWLocalizationManager &manager, std::function<QWidget *()> window = {});

    void presentOK(const QString &title, const QString &message) override;
    void presentOKOver(QObject &window, const QString &title, const QString &message) override;
    void presentInformation(const QString &title, const QString &message) override;
    bool presentOKCancel(const QString &title, const QString &message) override;
    bool presentChoice(const QString &title, const QString &message, const QString &accept,
                       const QString &reject) override;

    /// Sets the two texts in the style of all our alerts: the title bold, both plain text.
    static void setTexts(QMessageBox &box, const QString &title, const QString &message);

private:
    enum class Kind { Warning, Information, Question };

    bool present(Kind kind, const QString &title, const QString &message, const QString &accept,
                 const QString &reject = {}, QWidget *parent = nullptr);
    QString ok() const;

    BWLocalizationManager &m_manager;
    std::function<QWidget *()> m_window;
};

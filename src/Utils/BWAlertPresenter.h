#pragma once

#include <QString>

/// Shows modal alerts and waits for the answer. It words its own buttons: group "general", "option_ok" (English "OK")
/// and "option_cancel" (English "Cancel").
class BWAlertPresenter {
public:
    virtual ~BWAlertPresenter() = default;

    virtual void presentOK(const QString &title, const QString &message) = 0;
    /// True exactly when OK was chosen.
    virtual bool presentOKCancel(const QString &title, const QString &message) = 0;
};

#pragma once

#include <QString>

class QObject;

/// Shows modal alerts and waits for the answer. It words its own buttons unless told otherwise: group "general", "option_ok" (English "OK")
/// and "option_cancel" (English "Cancel").
class BWAlertPresenter {
public:
    virtual ~BWAlertPresenter() = default;

    virtual void presentOK(const QString &title, const QString &message) = 0;
    /// The same over that window, which gets the keyboard back afterwards.
    virtual void presentOKOver(QObject &window, const QString &title, const QString &message)
    {
        Q_UNUSED(window)
        presentOK(title, message);
    }
    /// The same for good news.
    virtual void presentInformation(const QString &title, const QString &message) { presentOK(title, message); }
    /// True exactly when OK was chosen.
    virtual bool presentOKCancel(const QString &title, const QString &message) = 0;
    /// The same with other words on the buttons; true exactly when the first was chosen.
    virtual bool presentChoice(const QString &title, const QString &message, const QString &accept,
                               const QString &reject) = 0;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <QDialog>
#include <utility>

/// Makes a dialog a sheet: open over one window, which it blocks, until it ends with a result or from outside. A member of
/// the dialog. GUI thread.
class BWSheet {
public:
    using Completion = std::function<void(int code)>;

    explicit BWSheet(QDialog *dialog) : m_dialog(dialog) { }

    /// Shows the dialog over the window. If it is open already, only the completion is replaced.
    void begin(QWidget *window, Completion completion)
    {
        m_completion = std::move(completion);
        m_open = true;
        if (m_dialog->parentWidget() != window)
            m_dialog->setParent(window, m_dialog->windowFlags());
        m_dialog->open();
    }
    /// Closes the dialog, then calls the completion with the code. Without effect when it is not open.
    void endWithCode(int code)
    {
        if (!m_open)
            return;
        const Completion completion = std::exchange(m_completion, {});
        end();
        if (completion)
            completion(code);
    }
    /// Closes the dialog without calling the completion.
    void end()
    {
        m_completion = {};
        m_open = false;
        m_dialog->hide();
    }

    bool isOpen() const { return m_open; }

private:
    QDialog *m_dialog;
    Completion m_completion;
    bool m_open = false;
};

#pragma once

#include <functional>

class QDialog;
class QWidget;

/// A dialog's life as a sheet: open over one window, which it blocks, until it is ended with a result or from outside.
/// A part of the dialog. GUI thread.
class BWSheet {
public:
    using Completion = std::function<void(int code)>;

    explicit BWSheet(QDialog *dialog) : m_dialog(dialog) { }

    /// Shows the dialog over the window. If it is open already, only the completion is exchanged.
    void begin(QWidget *window, Completion completion);
    /// Closes the dialog, then calls the completion with the code. Without effect when it is not open.
    void endWithCode(int code);
    /// Closes the dialog without a result: the completion is forgotten.
    void end();

    bool isOpen() const { return m_open; }

private:
    QDialog *m_dialog;
    Completion m_completion;
    bool m_open = false;
};

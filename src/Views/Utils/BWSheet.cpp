#include "Views/Utils/BWSheet.h"

#include <QDialog>
#include <utility>

void BWSheet::begin(QWidget *window, Completion completion)
{
    m_completion = std::move(completion);
    m_open = true;
    if (m_dialog->parentWidget() != window)
        m_dialog->setParent(window, m_dialog->windowFlags());
    m_dialog->open();
}

void BWSheet::endWithCode(int code)
{
    if (!m_open)
        return;
    const Completion completion = std::exchange(m_completion, {});
    end();
    if (completion)
        completion(code);
}

void BWSheet::end()
{
    m_completion = {};
    m_open = false;
    m_dialog->hide();
}

#include "modalclicker.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace {
constexpr int kPollMs = 10;
}

ModalClicker::ModalClicker(const QString &buttonName, int timeoutMs)
    : m_buttonName(buttonName)
    , m_timeoutMs(timeoutMs)
{
    m_timer.setInterval(kPollMs);
    QObject::connect(&m_timer, &QTimer::timeout, [this] { poll(); });
    m_elapsed.start();
    m_timer.start();
}

void ModalClicker::poll()
{
    QWidget *modal = QApplication::activeModalWidget();
    if (modal && modal->isVisible()) {
        if (auto *button = modal->findChild<QPushButton *>(m_buttonName)) {
            m_timer.stop();
            for (QLabel *label : modal->findChildren<QLabel *>())
                m_texts << label->text();
            m_clicked = true;
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
    }
    if (m_elapsed.elapsed() > m_timeoutMs) {
        m_timer.stop();
        if (auto *dialog = qobject_cast<QDialog *>(modal))
            dialog->reject();
    }
}

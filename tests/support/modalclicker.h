#ifndef MODALCLICKER_H
#define MODALCLICKER_H

#include <QElapsedTimer>
#include <QString>
#include <QStringList>
#include <QTimer>

// Answers the next modal dialog: polls for the active modal widget and clicks
// its push button with the given object name ("btnBlue" accepts a MsgBox,
// "btnWhite" cancels it). If no such button shows up in time the dialog is
// rejected, so a test never hangs in exec().
class ModalClicker
{
public:
    explicit ModalClicker(const QString &buttonName, int timeoutMs = 5000);

    bool clicked() const { return m_clicked; }
    // Texts of the labels of the answered dialog.
    QStringList dialogTexts() const { return m_texts; }

private:
    void poll();

    QString m_buttonName;
    int m_timeoutMs;
    QTimer m_timer;
    QElapsedTimer m_elapsed;
    bool m_clicked = false;
    QStringList m_texts;
};

#endif // MODALCLICKER_H

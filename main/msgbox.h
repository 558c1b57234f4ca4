#ifndef MSGBOX_H
#define MSGBOX_H

#include <QDialog>
#include <QPoint>
#include <QString>

class QLabel;
class QPushButton;
class QMouseEvent;

// Frameless, draggable confirmation dialog. Type 1 asks a question ("Ok" and
// "Cancel"); any other type is a plain notice with "Ok" only. The host's
// style sheet styles it through the object names "WhiteDialog", "btnBlue"
// and "btnWhite".
class MsgBox : public QDialog
{
    Q_OBJECT
public:
    MsgBox(int type, QString text);
    ~MsgBox() override;

public slots:
    void okBtn_press();
    void cancleBtn_press();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    QLabel *textLabel = nullptr;
    QPushButton *okBtn = nullptr;
    QPushButton *cancelBtn = nullptr;
    QPoint dragOrigin;
    bool isDragging = false;
};

#endif // MSGBOX_H

#include "msgbox.h"

#include <QFont>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr int kConfirmType = 1; // the only type that offers "Cancel"
constexpr int kFontPointSize = 11;
constexpr int kButtonSpacing = 20;
constexpr int kMargin = 30;
constexpr int kMinimumWidth = 300;
constexpr int kMinimumHeight = 150;
const char kFontFamily[] = "Microsoft YaHei";
} // namespace

MsgBox::MsgBox(int type, QString text)
    : QDialog(nullptr)
{
    // Replaced below by the dialog/frameless flags: the box does not stay on top.
    setWindowFlags(Qt::WindowStaysOnTopHint);

    QFont font;
    font.setPointSize(kFontPointSize);
    font.setFamily(QString::fromLatin1(kFontFamily));

    textLabel = new QLabel(text);
    textLabel->setAlignment(Qt::AlignCenter);
    textLabel->setFont(font);

    okBtn = new QPushButton(tr("Ok"));
    okBtn->setObjectName(QStringLiteral("btnBlue"));
    cancelBtn = new QPushButton(tr("Cancel"));
    cancelBtn->setObjectName(QStringLiteral("btnWhite"));

    auto *buttonRow = new QHBoxLayout;
    buttonRow->addWidget(okBtn);
    buttonRow->addWidget(cancelBtn);
    buttonRow->setAlignment(Qt::AlignCenter);
    buttonRow->setSpacing(kButtonSpacing);

    auto *mainLayout = new QVBoxLayout;
    mainLayout->addWidget(textLabel);
    mainLayout->addLayout(buttonRow);
    mainLayout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    setLayout(mainLayout);

    connect(okBtn, SIGNAL(clicked()), this, SLOT(okBtn_press()));
    connect(cancelBtn, SIGNAL(clicked()), this, SLOT(cancleBtn_press()));

    cancelBtn->setVisible(type == kConfirmType);

    setMinimumSize(kMinimumWidth, kMinimumHeight);
    // Markers for the host's style sheet and window handling.
    setProperty("canMove", true);
    setObjectName(QStringLiteral("WhiteDialog"));

    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
}

MsgBox::~MsgBox() = default;

void MsgBox::okBtn_press()
{
    QDialog::accept();
}

void MsgBox::cancleBtn_press()
{
    QDialog::reject();
}

void MsgBox::mousePressEvent(QMouseEvent *event)
{
    // Only the left button grabs the frameless window.
    if (event->button() == Qt::LeftButton) {
        isDragging = true;
        dragOrigin = event->localPos().toPoint();
    }
    QDialog::mousePressEvent(event);
}

void MsgBox::mouseMoveEvent(QMouseEvent *event)
{
    if (isDragging)
        move(event->screenPos().toPoint() - dragOrigin);
    QDialog::mouseMoveEvent(event);
}

void MsgBox::mouseReleaseEvent(QMouseEvent *event)
{
    isDragging = false;
    QDialog::mouseReleaseEvent(event);
}

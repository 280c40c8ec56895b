#pragma once

// Form of the controller frame. The host expects a QFrame; the plug-in never
// shows it.

#include <QCoreApplication>
#include <QFrame>
#include <QMetaObject>

class Ui_vlc
{
public:
    void setupUi(QFrame* vlc)
    {
        if (vlc->objectName().isEmpty())
            vlc->setObjectName("vlc");
        vlc->setFrameShadow(QFrame::Raised);
        vlc->resize(400, 300);
        vlc->setFrameShape(QFrame::StyledPanel);
        retranslateUi(vlc);
        QMetaObject::connectSlotsByName(vlc);
    }

    void retranslateUi(QFrame* vlc)
    {
        vlc->setWindowTitle(QCoreApplication::translate("vlc", "Frame", nullptr));
    }
};

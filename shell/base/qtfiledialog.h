#pragma once
#include <QFileDialog>
struct QtFileDialog {
    static QString getOpenFileName(QWidget *p, const QString &c, const QString &d, const QString &f, QString *s = nullptr) { return QFileDialog::getOpenFileName(p, c, d, f, s); }
    static QStringList getOpenFileNames(QWidget *p, const QString &c, const QString &d, const QString &f, QString *s = nullptr) { return QFileDialog::getOpenFileNames(p, c, d, f, s); }
    static QString getSaveFileName(QWidget *p, const QString &c, const QString &d, const QString &f, QString *s = nullptr) { return QFileDialog::getSaveFileName(p, c, d, f, s); }
};

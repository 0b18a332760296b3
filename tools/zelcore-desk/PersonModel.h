// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Simulator.h>

#include <QtCore/QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace zeldesk {

/// The texts and numbers of one person, a row each, to look at and to change: of the device's own user, or of a
/// contact. The simulator must outlive it.
class PersonModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The desk has it.")
    /// The contact's user id; empty for the device's own user.
    Q_PROPERTY(QString userId READ userId WRITE setUserId NOTIFY userIdChanged FINAL)
    /// False when there is no such contact any more.
    Q_PROPERTY(bool there READ isThere NOTIFY changed FINAL)
    Q_PROPERTY(QString name READ name NOTIFY changed FINAL)
    Q_PROPERTY(bool busy READ isBusy WRITE setBusy NOTIFY changed FINAL)
    /// In words.
    Q_PROPERTY(QString picture READ picture NOTIFY changed FINAL)

public:
    enum Role { LabelRole = Qt::UserRole, ValueRole };

    explicit PersonModel(zelcore::Simulator& simulator, QObject* parent = nullptr);

    QString userId() const { return m_userId; }
    void setUserId(const QString& userId);
    bool isThere() const { return m_userId.isEmpty() || !person().userId.isEmpty(); }
    QString name() const;
    bool isBusy() const { return person().showBusy; }
    void setBusy(bool busy);
    QString picture() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    /// What the service refuses is false, and the row shows again what is.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QHash<int, QByteArray> roleNames() const override;

    /// Gives the person a made-up picture of so many bytes; none for 0.
    Q_INVOKABLE void setPictureSize(int size);

Q_SIGNALS:
    void userIdChanged();
    /// Any row and property may be another.
    void changed();

private:
    zelcore::Person person() const;
    bool give(const zelcore::Person& person);
    void tellAll();

    zelcore::Simulator& m_simulator;
    QString m_userId;
};

} // namespace zeldesk

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "WireLog.h"

#include <zelcore/Simulator.h>

#include <QtCore/QAbstractListModel>
#include <QtCore/QStringList>
#include <QtCore/QTimer>
#include <QtQml/qqmlregistration.h>

#include <deque>
#include <set>

namespace zeldesk {

/// The records that passed between a simulator, who must outlive this, and its applications: the latest of them, and of
/// these the ones that are asked for.
///
/// Rows come and go in turns, ten a second at most, and in one piece each: a record costs next to nothing until
/// somebody looks at it. While it is held no row changes; the latest records wait.
class WireModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The desk has it.")
    Q_PROPERTY(int count READ count NOTIFY countsChanged FINAL)
    /// How many have passed since the beginning, shown or not.
    Q_PROPERTY(double passed READ passed NOTIFY countsChanged FINAL)
    Q_PROPERTY(bool held READ isHeld WRITE setHeld NOTIFY heldChanged FINAL)
    /// What has been seen of types and applications, to choose from.
    Q_PROPERTY(QStringList types READ types NOTIFY choicesChanged FINAL)
    Q_PROPERTY(QStringList applications READ applications NOTIFY choicesChanged FINAL)
    // What is asked for; an empty text asks for all.
    Q_PROPERTY(QString type READ type WRITE setType NOTIFY filterChanged FINAL)
    Q_PROPERTY(QString application READ application WRITE setApplication NOTIFY filterChanged FINAL)
    Q_PROPERTY(Direction direction READ direction WRITE setDirection NOTIFY filterChanged FINAL)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY filterChanged FINAL)

public:
    enum Direction { BothDirections, FromApplications, ToApplications };
    Q_ENUM(Direction)
    enum Role { TimeRole = Qt::UserRole, ApplicationRole, FromApplicationRole, TypeRole, SummaryRole, SizeRole };

    static constexpr qsizetype mostRecords = 10000;
    static constexpr qsizetype mostBytes = qsizetype(32) * 1024 * 1024;

    explicit WireModel(zelcore::Simulator& simulator, QObject* parent = nullptr);

    int count() const { return int(m_shown.size()); }
    double passed() const { return double(m_waiting.end()); }
    bool isHeld() const { return m_isHeld; }
    void setHeld(bool held);
    QStringList types() const;
    QStringList applications() const;

    QString type() const { return m_filter.type; }
    void setType(const QString& type) { ask({type, m_filter.application, m_filter.text, m_filter.direction}); }
    QString application() const { return m_filter.application; }
    void setApplication(const QString& number) { ask({m_filter.type, number, m_filter.text, m_filter.direction}); }
    Direction direction() const { return m_filter.direction; }
    void setDirection(Direction direction) { ask({m_filter.type, m_filter.application, m_filter.text, direction}); }
    QString text() const { return m_filter.text; }
    void setText(const QString& text) { ask({m_filter.type, m_filter.application, text, m_filter.direction}); }

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : count(); }
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// All of a record, for people.
    Q_INVOKABLE QString pretty(int row) const;
    /// -1 without one.
    Q_INVOKABLE int lastOfType(const QString& type) const;
    Q_INVOKABLE void clear();

Q_SIGNALS:
    void countsChanged();
    void heldChanged();
    void choicesChanged();
    void filterChanged();

private:
    struct Filter
    {
        QString type;
        QString application;
        QString text;
        Direction direction = BothDirections;

        bool operator==(const Filter&) const = default;
        bool accepts(const WireLog::Entry& entry) const;
    };

    void take(const zelcore::WireRecord& record);
    void takeTurn();
    void dropOldest(quint64 before);
    void showNew();
    std::deque<quint64> lookOn();
    void ask(const Filter& filter);

    WireLog m_waiting{mostRecords, mostBytes}; ///< For the next turn.
    WireLog m_log{mostRecords, mostBytes};
    std::deque<quint64> m_shown; ///< The numbers of those in the log that are asked for.
    quint64 m_looked = 0;        ///< All below have been looked at.
    Filter m_filter;
    bool m_isHeld = false;
    std::set<QString> m_types;
    std::set<int> m_applications;
    QTimer m_turn;
};

} // namespace zeldesk

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Simulator.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtQml/qqmlregistration.h>

namespace zeldesk {

/// How a simulator, who must outlive this, serves: registration and permissions, away and back, faults, and what it
/// says.
class Service : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The desk has it.")
    /// What to say in the shell of an application.
    Q_PROPERTY(QString exportLine READ exportLine CONSTANT FINAL)
    Q_PROPERTY(bool away READ isAway WRITE setAway NOTIFY awayChanged FINAL)
    Q_PROPERTY(
        QString registrationState READ registrationState WRITE setRegistrationState NOTIFY registrationChanged FINAL)
    Q_PROPERTY(QStringList registrationStates READ registrationStates CONSTANT FINAL)
    /// A zelcore::Simulator::RegistrationPolicy.
    Q_PROPERTY(int registrationPolicy READ registrationPolicy NOTIFY registrationChanged FINAL)
    Q_PROPERTY(QString registrationOutcome READ registrationOutcome NOTIFY registrationChanged FINAL)
    Q_PROPERTY(int registrationDelay READ registrationDelay NOTIFY registrationChanged FINAL)
    Q_PROPERTY(bool showAppBox READ isShowAppBox WRITE setShowAppBox NOTIFY permissionsChanged FINAL)
    Q_PROPERTY(bool zelInvites READ isZelInvites WRITE setZelInvites NOTIFY permissionsChanged FINAL)
    Q_PROPERTY(bool zelSetup READ isZelSetup WRITE setZelSetup NOTIFY permissionsChanged FINAL)
    Q_PROPERTY(bool recording READ isRecording NOTIFY recordingChanged FINAL)
    /// What was said, the latest first, and whether that is a complaint.
    Q_PROPERTY(QStringList notices READ notices NOTIFY noticed FINAL)
    Q_PROPERTY(bool complaint READ isComplaint NOTIFY noticed FINAL)

public:
    static constexpr qsizetype mostNotices = 200;

    explicit Service(zelcore::Simulator& simulator, QObject* parent = nullptr);

    QString exportLine() const;
    bool isAway() const { return m_simulator.isAway(); }
    void setAway(bool away);
    QString registrationState() const { return m_simulator.registrationState(); }
    void setRegistrationState(const QString& state);
    QStringList registrationStates() const { return zelcore::Simulator::registrationStates(); }
    int registrationPolicy() const { return int(m_simulator.registrationPolicy()); }
    QString registrationOutcome() const { return m_simulator.registrationOutcome(); }
    int registrationDelay() const { return m_simulator.registrationDelay(); }
    bool isShowAppBox() const { return m_simulator.permissions().showAppBox; }
    void setShowAppBox(bool on) { allow(&zelcore::Permissions::showAppBox, on); }
    bool isZelInvites() const { return m_simulator.permissions().zelInvites; }
    void setZelInvites(bool on) { allow(&zelcore::Permissions::zelInvites, on); }
    bool isZelSetup() const { return m_simulator.permissions().zelSetup; }
    void setZelSetup(bool on) { allow(&zelcore::Permissions::zelSetup, on); }
    bool isRecording() const { return m_simulator.isRecording(); }
    QStringList notices() const { return m_notices; }
    bool isComplaint() const { return m_isComplaint; }

    /// What answers registration requests, after \a delay milliseconds; \a state counts for the policy Fixed.
    Q_INVOKABLE void setRegistrationPolicy(int policy, const QString& state, int delay);
    /// Runs a line of zelcore-sim's command language, and notes what it answers.
    Q_INVOKABLE bool execute(const QString& line);
    /// Writes what passes from now on into the new file \a path, "~/" at its beginning being the user's own folder.
    /// False, with a notice, when that cannot be.
    Q_INVOKABLE bool record(const QString& path);
    /// A file that is not there yet, in the folder that the desk was started in.
    Q_INVOKABLE QString newRecording() const;
    /// Shows that the simulator has begun to, for whoever had it do so.
    void recordsInto(const QString& path);
    Q_INVOKABLE void stopRecording();
    /// Drops all connections, and begins with a world of its own.
    Q_INVOKABLE void reset();
    Q_INVOKABLE void copyExportLine() const;

    /// Notes a line for the person at the desk.
    void note(const QString& line, bool isComplaint = false);

Q_SIGNALS:
    void awayChanged();
    void registrationChanged();
    void permissionsChanged();
    void recordingChanged();
    /// A command, a scenario or a reset may have ordered anything, of which no other signal tells.
    void ordersChanged();
    void noticed();

private:
    void allow(bool zelcore::Permissions::*permission, bool on);

    zelcore::Simulator& m_simulator;
    QStringList m_notices;
    bool m_isComplaint = false;
};

} // namespace zeldesk

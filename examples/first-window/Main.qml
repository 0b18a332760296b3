import QtQuick
import QtQuick.Controls
import ZelPlatform

ApplicationWindow {
    visible: true
    title: profile.displayName
    Context { id: context; uuid: "6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10"; registration: Context.Automatic }
    UserProfile { id: profile; context: context }
    ListView {
        anchors.fill: parent
        model: ContactListModel { context: context }
        delegate: Label { required property string displayName; text: displayName }
    }
}

// SPDX-License-Identifier: Apache-2.0
import QtQuick
import ZelCoreDesk

// A value to change. It counts when Enter is pressed or the focus goes on; what is refused is what it was.
Field {
    id: field

    property string value

    signal changed(string to)

    text: value
    onEditingFinished: {
        if (text !== value)
            changed(text)
        text = Qt.binding(() => field.value)
    }
}

import QtQuick

// How the question whether to kill comes and goes, and what makes room for it.
NumberAnimation {
    objectName: "asking"
    duration: 200
    easing.type: Easing.InOutQuad
}

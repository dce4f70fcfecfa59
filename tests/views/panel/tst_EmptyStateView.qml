import QtQuick
import QtTest
import Tidewick

TestCase {
    name: "EmptyStateView"
    width: 480
    height: 400
    visible: true
    when: windowShown

    EmptyStateView {
        id: view

        anchors.fill: parent
    }

    function test_texts() {
        const title = findChild(view, "title");
        const hint = findChild(view, "hint");
        compare(title.text, "No active services");
        compare(title.font.pixelSize, 17);
        compare(title.font.weight, Font.Medium);
        compare(hint.text, "Your local servers will appear here");
        compare(hint.font.pixelSize, 13);
        compare(hint.mapToItem(view, 0, 0).y - title.mapToItem(view, 0, 0).y, title.height + 6);
    }

    function test_standsInTheMiddle() {
        const title = findChild(view, "title");
        const middle = title.mapToItem(view, title.width / 2, 0).x;
        fuzzyCompare(middle, view.width / 2, 1);
    }
}

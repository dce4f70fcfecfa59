import QtQuick
import QtTest
import Tidewick

// Finds items and reads them. A row of a table has a name, what the items say, and what they are to
// say.
TestCase {
    // The items in `item` that pass `test`, in the order of their declaration.
    function items(item, test) {
        return (test(item) ? [item] : []).concat(...Array.from(item.children, child => items(child, test)));
    }

    function symbol(item, name) {
        return items(item, one => one instanceof Symbol && one.name === name)[0];
    }

    function text(item, words) {
        return items(item, one => one instanceof Text && one.text === words)[0];
    }

    function at(color, opacity) {
        return Qt.rgba(color.r, color.g, color.b, opacity);
    }

    function white(opacity) {
        return Qt.rgba(1, 1, 1, opacity);
    }

    function distance(a, b) {
        return Math.hypot(a.r - b.r, a.g - b.g, a.b - b.b);
    }

    function isSame(a, b) {
        if (Array.isArray(b))
            return a.length === b.length && b.every((part, index) => isSame(a[index], part));
        if (typeof b === "number")
            return Math.abs(a - b) < 0.01;
        return String(a) === String(b);
    }

    function check(rows) {
        const wrong = rows.filter(row => !isSame(row[1], row[2]));
        compare(wrong.map(row => row[0] + " is " + row[1] + ", not " + row[2]), []);
    }

    // Size, weight and colour of a text; colour, size and weight of a symbol.
    function font(item) {
        return [item.font.pixelSize, item.font.weight, item.color];
    }

    function ink(item) {
        return [item.size, item.weight, item.color];
    }

    // Left, top, width and height in `frame`.
    function box(item, frame) {
        const place = item.mapToItem(frame, 0, 0);
        return [place.x, place.y, item.width, item.height];
    }

    // How far what `button` shows is from its edges: left, top, right and bottom.
    function paddings(button) {
        return [button.leftPadding, button.topPadding, button.rightPadding, button.bottomPadding];
    }
}

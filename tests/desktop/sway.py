"""What the tests under sway see: its outputs, its windows, its pictures."""

import json
import os
import subprocess

import desktop


def message(*arguments):
    """What swaymsg answers."""
    answer = subprocess.run(["swaymsg", "-r", *arguments], capture_output=True, text=True,
                            check=True).stdout
    return json.loads(answer)


def outputs():
    """The screens, each with its place and size in points and its scale."""
    return message("-t", "get_outputs")


def windows(name):
    """The compositor's windows of this name."""
    found = []

    def search(node):
        if node.get("app_id") and node["name"] == name:
            found.append(node)
        for child in node["nodes"] + node["floating_nodes"]:
            search(child)
    search(message("-t", "get_tree"))
    return found


def has_layer_shell():
    """Whether the program was built with LayerShellQt, so that its panel is no window."""
    libraries = subprocess.run(["ldd", desktop.PROGRAM], capture_output=True, text=True,
                               check=True).stdout
    return "LayerShellQt" in libraries


def drawing(left, top, width, height, scale=1, least=300):
    """What is drawn on the black background in this part of the desktop: left, top, width and
    height in points; None if nothing is. Rows with less than `least` points count as bare: 300
    leave out the pointer and tooltips."""
    data = pixels(f"{left},{top} {width}x{height}", scale)
    row_size = 3 * round(width * scale)
    rows = [data[at:at + row_size] for at in range(0, len(data), row_size)]
    drawn = [number for number, row in enumerate(rows)
             if row_size - row.count(0) > 3 * least * scale]
    if not drawn:
        return None
    first = min(row_size - len(rows[number].lstrip(b"\0")) for number in drawn) // 3
    last = (max(len(rows[number].rstrip(b"\0")) for number in drawn) - 1) // 3
    return (left + first / scale, top + drawn[0] / scale, (last - first + 1) / scale,
            (drawn[-1] - drawn[0] + 1) / scale)


def pixels(region, scale=1):
    """The pixels of a region of the desktop, given in points, at this scale; three bytes each."""
    picture = subprocess.run(["grim", "-t", "ppm", "-s", str(scale), "-g", region, "-"],
                             capture_output=True, check=True).stdout
    return picture.split(b"\n255\n", 1)[1]


def ink(left, top, width, height):
    """Where the program's colour stands in this part of the desktop, in its points."""
    data = pixels(f"{left},{top} {width}x{height}")
    return [(left + at // 3 % width, top + at // 3 // width) for at in range(0, len(data), 3)
            if data[at:at + 3] == desktop.INK]


def screenshot(name):
    subprocess.run(["grim", os.path.join(desktop.SCREENSHOTS, name + ".png")], check=True)

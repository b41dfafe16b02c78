"""Pictures of the screen, taken once it has come to rest."""
import pathlib
import subprocess
import time

from processes import wait_until


REST = 0.1  # seconds between two pictures, at least


class Camera:
    def __init__(self, desktop, folder):
        self.desktop = desktop
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)

    def take(self, name, box):
        """Of a part of the screen, in pixels; gives the file."""
        file = self.folder / f"{name}.png"
        subprocess.run(["timeout", "20", "convert", "-size", f"{box[2]}x{box[3]}", "-depth", "8", "rgb:-", str(file)],
                       check=True, input=self.bytes_at_rest(box))
        return file

    def bytes_at_rest(self, box):
        """Three for each pixel."""
        last = b""

        def is_at_rest():
            nonlocal last
            before, last = last, self._bytes(box)
            time.sleep(REST)
            return before == last
        wait_until(is_at_rest, "rest on the screen")
        return last

    def brightness(self, box):
        """Of the greater part of it, from 0 to 1."""
        pixels = sorted(self._bytes(box))
        return pixels[len(pixels) // 2] / 255

    def changed_box(self, before, after):
        """Where two pictures of the whole screen differ."""
        text = self.desktop.run("convert", before, after, "-compose", "difference", "-composite", "-threshold", "1%",
                                "-format", "%@", "info:")
        width, height, left, top = (int(number) for number in text.replace("x", "+").split("+"))
        return left, top, width, height

    def _bytes(self, box):
        left, top, width, height = box
        return subprocess.run(["timeout", "20", "import", "-silent", "-window", "root", "-crop",
                               f"{width}x{height}+{left}+{top}", "-depth", "8", "rgb:-"], check=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE).stdout


def around(box, margin, screen):
    """A box with room around it, inside the screen."""
    left, top = max(0, box[0] - margin), max(0, box[1] - margin)
    return (left, top, min(screen[0], box[0] + box[2] + margin) - left,
            min(screen[1], box[1] + box[3] + margin) - top)

"""What the tests of an account's history share: its opening, and the dialog through which it is exported."""
import os
import subprocess

from case import DesktopTest, wait_until
from world import Account

DIALOG = "Export"


def known(folder, name, answer, **more):
    """An account that nobody asks for, so that no reading comes to its samples."""
    return Account(folder, name, answer, known=tuple(answer["body"]["limits"]), age=5.0, waits=3600.0, **more)


class HistoryTest(DesktopTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.program.start_with_item()
        cls.documents = cls.desktop.home / "Documents"
        cls.documents.mkdir(exist_ok=True)

    def setUp(self):
        self.addCleanup(self.close_all)

    def close_all(self):
        if self.dialog_box():
            self.key("Escape")
            wait_until(lambda: not self.dialog_box(), "the end of the dialog")
        self.close_popover()

    def open_history(self, name):
        """From the list, or from the history that was shown last."""
        popover = self.wait_for_popover() if self.popover_box() else self.open_popover()
        if popover.find("Back"):
            popover.press("Back")
        popover.press(f"History for {name}")
        wait_until(lambda: (texts := popover.texts()) and "History" in texts and name in texts, "the history")

    def dialog_box(self):
        return next((box for name, box in self.desktop.windows("vellumor") if name == DIALOG), None)

    def wait_for_dialog(self):
        wait_until(self.dialog_box, "the dialog")
        return wait_until(lambda: self.window(DIALOG), "the dialog's content")

    def type_path(self, path):
        """In the place of what the dialog offers; gives that."""
        dialog = self.wait_for_dialog()
        field = wait_until(lambda: next((node for node in dialog.below() if node.role == "text" and node.is_focused), None),
                           "the dialog's field")
        offered = field.written
        self.key("ctrl+a")
        self.desktop.run("xdotool", "type", "--delay", "2", str(path))
        wait_until(lambda: field.written == str(path), "the path in the dialog")
        self.key("Return")
        wait_until(lambda: not self.dialog_box(), "the end of the dialog")
        return offered

    def export(self, button, file):
        file.unlink(missing_ok=True)
        self.popover.press(button)
        offered = self.type_path(file)
        wait_until(file.exists, f"{file.name}")
        return os.path.basename(offered)

    def clipboard(self):
        answer = subprocess.run(["timeout", "5", "xclip", "-selection", "clipboard", "-o"], env=os.environ, text=True,
                                check=False, stdin=subprocess.DEVNULL, capture_output=True)
        return answer.stdout


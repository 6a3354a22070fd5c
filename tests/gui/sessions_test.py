"""What two programs of one user, a stranger's files in the shared folder, and a source without a settings
window come to."""
import os
import subprocess

import session

session.enter()

import unittest  # noqa: E402

from driver import wait  # noqa: E402
from window_support import WindowTest, strings_of  # noqa: E402

NOBODY = 65534


def give_away(path):
    """Makes a file or folder that is there another user's: as root, by sudo, or not at all."""
    if os.geteuid() == 0:
        os.chown(path, NOBODY, NOBODY)
        return
    subprocess.run(["sudo", "-n", "chown", f"{NOBODY}:{NOBODY}", str(path)], check=True, capture_output=True)


class Sessions(WindowTest):
    def shared(self, name):
        return self.home.folder / "scratch/tmp" / name

    def test_a_second_start_brings_the_first_window_to_the_front(self):
        first = self.started()
        self.scan(first, 2)
        pages = self.files()
        second = self.start()
        self.assertEqual(second.wait_end(), 0)
        # The first one goes on, and its temporary folder was left alone.
        self.assertTrue(self.shared("CorvaneTempImage/MultiImage").is_dir())
        self.scan(first, 4)
        self.assertEqual(self.files()[:len(pages)], pages)
        self.close(first)

    def test_a_strangers_temporary_folder_is_left_alone(self):
        theirs = self.shared("CorvaneTempImage")
        theirs.mkdir(parents=True)
        (theirs / "letter").write_text("not yours")
        theirs.chmod(0o777)
        give_away(theirs)
        self.use_window_beside(theirs)
        self.assertEqual((theirs / "letter").read_text(), "not yours")
        self.assertEqual([p.name for p in theirs.iterdir()], ["letter"])

    def test_a_link_in_the_temporary_folders_place_is_not_followed(self):
        mine = self.home.folder / "mine"
        (mine / "MultiImage").mkdir(parents=True)
        (mine / "MultiImage/letter").write_text("mine")
        theirs = self.shared("CorvaneTempImage")
        theirs.parent.mkdir(parents=True)
        theirs.symlink_to(mine)
        self.use_window_beside(theirs)
        self.assertTrue(theirs.is_symlink())
        self.assertEqual((mine / "MultiImage/letter").read_text(), "mine")
        self.assertEqual([p.name for p in mine.rglob("*")], ["MultiImage", "letter"])

    def use_window_beside(self, theirs):
        """A session whose scratch files must go elsewhere."""
        program = self.started()
        own = self.home.folder / "cache/paperline/scratch"
        wait(lambda: (own / "CorvaneTempImage/MultiImage").is_dir(), "the folder is the user's own")
        self.assertEqual(own.stat().st_mode & 0o777, 0o700)
        self.choose_format(program, "Multi-Page PDF")
        self.scan(program, 2)
        self.assertEqual([p.suffix for p in self.files()], [".pdf"])
        self.close(program)
        self.assertFalse((own / "CorvaneTempImage").exists())

    def test_setup_says_that_there_is_no_settings_window(self):
        program = self.started()
        program.click(program.find(role="push button", name="Setup"))
        text = strings_of(self.tree, "en")["SourceNoSettings"]
        alert = program.window("alert", "a message shows")
        labels = [c.name for c in alert.walk() if c.role == "label" and c.name]
        self.assertEqual(labels, [text])
        program.click(program.first(alert.walk(), role="push button"))
        self.wait_idle(program)
        self.scan(program, 2)
        self.close(program)


if __name__ == "__main__":
    unittest.main()

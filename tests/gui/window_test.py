"""A person's session with the window: choosing a scanner, scanning, looking at pages, options, languages, leaving."""
import plistlib

import session

session.enter()

import unittest  # noqa: E402

import driver  # noqa: E402
from driver import PRODUCT, wait, xdotool  # noqa: E402
from window_support import FORMATS, WindowTest, read_plist, strings_of  # noqa: E402

SECOND = "Zealous Scanner"
LANGUAGES = ["en", "zh-Hant", "zh-Hans", "ja", "ko", "de", "fr", "es", "it", "cs", "pt-BR", "ru", "pt", "pl", "bg",
             "da-DK", "nl", "fi", "fr-CA", "el", "hu", "nb", "ro", "sk", "sv", "tr", "ar"]
MENU_NAMES = ["English", "繁體中文", "简体中文", "日本語", "한국어", "Deutsch", "Français", "Español", "Italiano", "Čeština",
              "Português (Brasil)", "Русский", "Portuguese", "Polski", "Български", "Dansk", "Nederlands", "Finnish",
              "French Canada", "Greek", "Magyar", "Norsk", "Romanian", "Slovenčina", "Svenska", "Turkish", "Arabic"]
JAPANESE, GERMAN, FRENCH, SPANISH, RUSSIAN, ARABIC = 3, 5, 6, 7, 11, 26


class ChoiceOfScanner(WindowTest):
    def setUp(self):
        super().setUp()
        self.tree.add_source(SECOND)
        self.home.set_options(product=SECOND, count=1, resolution=75)

    def list_of_scanners(self, program):
        dialog = program.window("dialog", "the selection window shows")
        table = program.first(dialog.walk(), role="table")
        wait(lambda: table.rows == 2, "two scanners are listed")
        return table

    def test_the_chosen_scanner_scans_and_is_remembered(self):
        for product, language in ((PRODUCT, SPANISH), (SECOND, FRENCH)):
            self.write_language_file(product, language)
        program = self.start()
        table = self.list_of_scanners(program)
        self.assertEqual(table.cell_names(), [PRODUCT, SECOND])
        self.assertTrue(table.cell(0).has("SELECTED"))
        program.click(table.cell(1))
        wait(lambda: table.cell(1).has("SELECTED"), "the second scanner is selected")
        program.click(program.find(role="push button", name="OK"))
        program.main_window()
        self.assertEqual(self.language_of(SECOND), 0, "the source speaks the window's language")
        self.assertEqual(self.language_of(PRODUCT), SPANISH, "the source that was not chosen has its own again")

        self.scan(program, rows=1)
        self.close(program)
        settings = read_plist(self.tree.settings_file)
        self.assertEqual(settings["ScannerName"], SECOND)
        self.assertEqual(settings["Language"], 0)
        self.assertEqual(settings[self.home.profile_key(SECOND)],
                         {"SavePath": str(self.home.folder / "Documents/Image"), "FileFormat": 1, "Language": 0,
                          "ShowInFinder": 0})
        self.assertEqual(self.language_of(SECOND), FRENCH)
        self.assertEqual(read_plist(self.tree.language_file(SECOND)),
                         {"Default": {"Language": FRENCH, "Paper": "A4"}, "Other": [1, 2]})

        again = self.start()
        table = self.list_of_scanners(again)
        wait(lambda: table.cell(1).has("SELECTED"), "the scanner of the last time is selected")
        again.key("Escape")
        self.assertEqual(again.wait_end(), 0)
        self.assertEqual(read_plist(self.tree.settings_file)["ScannerName"], SECOND)

    def test_keys_choose_as_well(self):
        program = self.start()
        table = self.list_of_scanners(program)
        program.focus_window("dialog")
        program.key("Down")
        wait(lambda: table.cell(1).has("SELECTED"), "the arrow key selects the second scanner")
        program.key("Return")
        program.main_window()
        self.assertTrue(self.tree.language_file(SECOND).exists())

    def write_language_file(self, product, language):
        with open(self.tree.language_file(product), "wb") as file:
            plistlib.dump({"Default": {"Language": language, "Paper": "A4"}, "Other": [1, 2]}, file)

    def language_of(self, product):
        return read_plist(self.tree.language_file(product))["Default"]["Language"]


class Formats(WindowTest):
    def test_every_format_of_the_list_is_written_listed_and_shown(self):
        program = self.started()
        combo = program.find(role="combo box")
        names = [item.name for item in combo.walk() if item.role == "list item"]
        self.assertEqual(names, [form.name for form in FORMATS])
        rows = 0
        for form in FORMATS:
            with self.subTest(form.name):
                before = self.files()
                self.choose_format(program, form.name)
                rows += 2
                self.scan(program, rows=rows)
                new = sorted(set(self.files()) - set(before))
                self.assertEqual([path.suffix for path in new], [form.suffix] * (1 if form.joins else 2))
                for path in new:
                    self.assertTrue(path.read_bytes().startswith(form.start), path)
                captions = [f"{new[0].stem}(1)", f"{new[0].stem}(2)"] if form.joins else [path.stem for path in new]
                self.assertEqual(program.find(role="table").cell_names()[-2:], captions)
                self.wait_page_drawn(program)
        # Each page once more, by a click on its row: every format is read back.
        table = program.find(role="table")
        for row in range(0, rows, 2):
            program.select_row(table, row)
            self.wait_page_drawn(program)
        self.close(program)
        profile = read_plist(self.tree.settings_file)[self.home.profile_key()]
        self.assertEqual(profile["FileFormat"], FORMATS.index(FORMATS[-1]))


class SaveSwitch(WindowTest):
    def test_off_shows_only_and_on_saves_again(self):
        program = self.started()
        self.scan(program, rows=2)
        combo, field = program.find(role="combo box"), program.find(role="text", name="Save folder and file name")
        pane = self.page_view(program)
        width_beside_list = pane.box[2]
        program.click(program.find(role="push button", name="Save"))
        wait(lambda: not combo.enabled and not field.enabled, "format and folder are off")
        wait(lambda: pane.box[2] > width_beside_list + 200, "the page view takes the list's room")
        self.wait_status(program, "Pages are shown only, not saved")
        self.assertFalse(program.find(name="Save", test=lambda c: c.role.endswith("menu item")).checked)
        before = self.files()
        program.key("ctrl+r")
        self.wait_idle(program, "Pages are shown only, not saved")
        self.wait_page_drawn(program)
        self.assertEqual(self.files(), before)
        self.assertTrue(program.find(role="push button", name="Scan").enabled)
        self.assertFalse(combo.enabled)

        program.key("ctrl+s")
        wait(lambda: combo.enabled and field.enabled, "format and folder are on")
        wait(lambda: pane.box[2] == width_beside_list, "the list has its room again")
        wait(lambda: program.find(name="Save", test=lambda c: c.role.endswith("menu item")).checked, "the mark is set")
        # The preview stays on show, but no row is its; both modes still work on it.
        table = program.find(role="table")
        self.assertEqual(table.rows, 2)
        self.assertFalse([row for row in range(2) if table.cell(row).has("SELECTED")])
        self.assertIn("Pages: 2", [c.name for c in program.main_window().walk() if c.role == "label"])
        for key, mode in (("ctrl+1", "Actual Size"), ("ctrl+0", "Fit Page")):
            program.key(key)
            wait(lambda: program.find(name=mode).checked, f"{mode} is on")
        program.click(table.cell(1))
        wait(lambda: table.cell(1).has("SELECTED"), "a click selects a row")
        for key, mode in (("ctrl+1", "Actual Size"), ("ctrl+0", "Fit Page")):
            program.key(key)
            wait(lambda: program.find(name=mode).checked, f"{mode} is on")
        self.assertEqual(table.rows, 2)
        program.key("ctrl+r")
        wait(lambda: len(self.files()) == len(before) + 2, "pages are saved again")


class FolderAndOptions(WindowTest):
    def field(self, program):
        return program.find(role="text", name="Save folder and file name")

    def test_a_chosen_folder_keeps_the_name(self):
        target = self.home.folder / "Scans of today"
        target.mkdir()
        program = self.started()
        before = self.field(program).text
        program.click(program.find(role="push button", name="Save Folder"))
        self.folder_dialog(program)
        program.key("Escape")
        wait(lambda: not program.first(program.windows(), role="dialog"), "the chooser closes")
        self.assertEqual(self.field(program).text, before)

        program.click(program.find(role="push button", name="Save Folder"))
        self.folder_dialog(program)
        program.key("ctrl+a")
        program.type(str(target))
        program.key("Return")
        wait(lambda: self.field(program).text == f"{target}/Image", "the field shows the folder with the name")
        self.scan(program, rows=2)
        self.assertEqual(sorted(path.name for path in target.glob("*.jpg")), ["Image_00001.jpg", "Image_00002.jpg"])
        self.close(program)
        self.assertEqual(read_plist(self.tree.settings_file)[self.home.profile_key()]["SavePath"], f"{target}/Image")

    def folder_dialog(self, program):
        dialog = program.window("dialog", "the folder chooser shows") if not program.first(
            program.windows(), role="file chooser") else program.first(program.windows(), role="file chooser")
        program.focus_window(dialog.role)
        return dialog

    def test_a_folder_typed_by_hand_counts_at_the_scan_and_at_the_end(self):
        program = self.started()
        program.click(self.field(program))
        program.key("ctrl+a")
        program.type(f"{self.home.folder}/Typed/")
        wait(lambda: self.field(program).text == f"{self.home.folder}/Typed/", "the text is typed")
        self.scan(program, rows=2)
        # A folder without a name behind it gives names without a beginning.
        self.assertEqual(sorted(path.name for path in (self.home.folder / "Typed").glob("*.jpg")),
                         ["_00001.jpg", "_00002.jpg"])
        self.close(program)
        self.assertEqual(read_plist(self.tree.settings_file)[self.home.profile_key()]["SavePath"],
                         f"{self.home.folder}/Typed/Image")

    def test_a_folder_may_be_typed_from_home(self):
        program = self.started()
        program.click(self.field(program))
        program.key("ctrl+a")
        program.type("~/Typed/Page")
        self.scan(program, rows=2)
        self.assertEqual(sorted(path.name for path in (self.home.folder / "Typed").glob("*.jpg")),
                         ["Page_00001.jpg", "Page_00002.jpg"])
        self.assertEqual(self.field(program).text, f"{self.home.folder}/Typed/Page")

    def test_pages_that_no_disk_takes_are_named(self):
        blocked = self.home.folder / "blocked"
        blocked.write_text("a file in the folder's place")
        program = self.started()
        program.click(self.field(program))
        program.key("ctrl+a")
        program.type(f"{blocked}/Image")
        program.click(program.find(role="push button", name="Scan"))
        alert = program.window("alert", "a message shows", 60)
        words = "\n".join(control.name for control in alert.walk())
        self.assertIn("The page could not be saved.", words)
        for number in (1, 2):
            self.assertIn(f"{blocked}/Image_{number:05d}.jpg", words)
        program.focus_window("alert")
        program.key("Return")
        self.wait_idle(program)
        self.assertEqual(program.find(role="table").rows, 0)
        self.close(program)

    def test_saved_files_are_revealed_on_wish(self):
        manager = driver.FileManager()
        self.addCleanup(manager.leave)
        program = self.started()
        title = "Show Saved Files in File Manager"
        program.menu("Options", "Others", title)
        wait(lambda: program.find(name=title).checked, "the option is marked")
        self.scan(program, rows=2)
        wait(lambda: manager.shown, "the file manager is asked")
        self.assertEqual(manager.shown, [f"file://{self.home.folder}/Documents"])
        self.close(program)
        self.assertEqual(read_plist(self.tree.settings_file)[self.home.profile_key()]["ShowInFinder"], 1)


class Languages(WindowTest):
    def test_all_languages_by_the_menu(self):
        program = self.started()
        title = {key: key for key in ("Options", "Language")}
        shown = strings_of(self.tree, "en")
        title.update(shown)
        for index, (folder, menu_name) in enumerate(zip(LANGUAGES, MENU_NAMES)):
            with self.subTest(menu_name):
                program.menu(title["Options"], title["Language"], menu_name)
                # A folder that is not there leaves the texts as they are.
                title = strings_of(self.tree, folder) or title
                self.check_texts(program, title)
                self.assertTrue(program.find(name=menu_name).checked)
                self.assertEqual(
                    [c.name for c in program.main_window().walk() if c.name in MENU_NAMES and c.checked], [menu_name])
                self.assertEqual(read_plist(self.tree.language_file(PRODUCT))["Default"]["Language"], index)
                self.check_nothing_clipped(program)
        self.close(program)
        settings = read_plist(self.tree.settings_file)
        self.assertEqual(settings["Language"], 26)
        self.assertEqual(settings[self.home.profile_key()]["Language"], 26)
        self.assertEqual(read_plist(self.tree.language_file(PRODUCT))["Default"]["Language"], 0)
        again = self.start()
        again.main_window()
        self.check_texts(again, title)

    def test_the_panes_change_sides_with_the_direction_of_the_script(self):
        program = self.started()
        texts = {language: strings_of(self.tree, language) for language in ("en", "ar")}
        for was, language, menu_name in (("en", "ar", "Arabic"), ("ar", "en", "English")):
            program.menu(texts[was]["Options"], texts[was]["Language"], menu_name)
            wait(lambda: program.find(name=texts[language]["PageViewName"]), "the page view has its new name")
            table = program.find(role="table")
            view = program.find(name=texts[language]["PageViewName"])
            wait(lambda: (table.box[0] > view.box[0]) == (language == "ar"), "the list has changed sides")
            self.check_nothing_clipped(program)

    def test_nothing_is_clipped_on_a_fine_screen(self):
        for language in (GERMAN, RUSSIAN, JAPANESE, ARABIC):
            for size in ((1024, 678), (1366, 768)):
                with self.subTest(LANGUAGES[language], size=size):
                    self.home.remember_window(*size)
                    self.home.write_settings(self.tree, language=language)
                    program = self.start(QT_SCALE_FACTOR="2")
                    try:
                        self.assertEqual(program.main_window().box[2:], size)
                        self.check_texts(program, strings_of(self.tree, LANGUAGES[language]))
                        self.check_nothing_clipped(program)
                    finally:
                        program.stop()  # a window that stays would be raised instead of the next one

    def check_texts(self, program, texts):
        wait(lambda: program.find(role="push button", name=texts["Scan"]), "the Scan button is retitled")
        names = {c.name for c in program.main_window().walk()}
        for key in ("Setup", "Scan", "FileFormat", "File", "Save", "Quit", "Window", "Minimize", "Options", "Language",
                    "Others", "ShowInFinder", "FitPage", "ActualPage", "AboutHastellRoamingLeafGATHER",
                    "HideHastellRoamingLeafGATHER", "QuitHastellRoamingLeafGATHER", "ShowAll", "PageListName",
                    "SaveFolderName", "StatusReady", "OpenFolder"):
            self.assertIn(texts[key], names, key)

    def check_nothing_clipped(self, program):
        """Every control of the toolbar lies inside the window and none over another."""
        window = program.main_window()
        x, y, width, height = window.box
        bar = program.first(window.walk(), role="tool bar")
        boxes = [c.box for c in bar.children() if c.showing and c.role != "separator"]
        for box in boxes:
            self.assertTrue(x <= box[0] and box[0] + box[2] <= x + width, (box, window.box))
        boxes.sort()
        for left, right in zip(boxes, boxes[1:]):
            self.assertLessEqual(left[0] + left[2], right[0])
        self.assertEqual(len(boxes), 9)


class Keyboard(WindowTest):
    def focused(self, program):
        return program.first(program.main_window().walk(), test=lambda c: c.has("FOCUSED"))

    def wait_focus(self, program, name):
        wait(lambda: (lambda c: c and (c.name == name or c.description == name))(self.focused(program)),
             f"'{name}' has the focus")

    def test_tab_visits_every_control_in_the_order_of_the_window(self):
        program = self.started()
        program.focus_window("frame")
        self.scan(program, rows=2)
        self.wait_focus(program, "Scanned pages")
        order = ["Page view", "Setup", "Scan", "The format in which pages are saved", "Save", "Save Folder",
                 "Save folder and file name", "Open Folder", "Fit Page", "Actual Size", "Scanned pages"]
        for name in order:
            program.key("Tab")
            self.wait_focus(program, name)
        for name in reversed(order[:-1]):
            program.key("shift+Tab")
            self.wait_focus(program, name)

    def test_a_session_without_a_mouse(self):
        program = self.started()
        program.focus_window("frame")
        program.key("ctrl+r")
        table = program.find(role="table")
        wait(lambda: table.rows == 2, "two pages are listed")
        self.wait_idle(program)
        wait(lambda: table.cell(1).has("SELECTED"), "the newest page is selected")
        program.key("Up")
        wait(lambda: table.cell(0).has("SELECTED"), "the arrow key selects the page before")
        program.key("ctrl+1")
        wait(lambda: program.find(name="Actual Size").checked, "actual size is on")
        self.assertFalse(program.find(name="Fit Page").checked)
        program.key("ctrl+0")
        wait(lambda: program.find(name="Fit Page").checked, "fit is on")
        program.key("alt+f")
        program.key("Escape", "Escape")
        program.key("ctrl+e")  # this scanner has no settings of its own and says so
        program.window("alert", "a message shows")
        program.focus_window("alert")
        program.key("Return")
        self.wait_idle(program)
        program.focus_window("frame")
        program.key("ctrl+q")
        self.assertEqual(program.wait_end(), 0)

    def test_menus_open_in_a_script_without_underlined_letters(self):
        for language, towards_next in ((JAPANESE, "Right"), (ARABIC, "Left")):
            with self.subTest(LANGUAGES[language]):
                self.home.write_settings(self.tree, language=language)
                texts = strings_of(self.tree, LANGUAGES[language])
                program = self.started()
                program.focus_window("frame")
                program.key("Alt_L")
                program.key("Down", towards_next)
                wait(lambda: program.first(program.main_window().walk(), name=texts["Quit"],
                                           test=lambda c: c.showing), "the File menu is open")
                program.key("Up", "Return")
                self.assertEqual(program.wait_end(), 0)

    def test_every_control_has_a_name(self):
        program = self.started()
        self.scan(program, rows=2)
        for control in program.main_window().walk():
            if control.has("FOCUSABLE") and control.showing and control.role != "list item":
                self.assertTrue(control.name, f"{control} {control.box}")
        combo = program.find(role="combo box")
        labels = [relation.get_target(0).get_name() for relation in combo.accessible.get_relation_set()]
        self.assertIn("File format", labels)


class Leaving(WindowTest):
    def test_closing_the_window_ends_the_program_and_cleans_up(self):
        program = self.started()
        scratch = self.home.folder / "scratch/tmp/CorvaneTempImage"
        self.assertTrue(scratch.is_dir())
        program.close_window()
        self.assertEqual(program.wait_end(), 0)
        self.assertFalse(scratch.exists())
        self.assertEqual(read_plist(self.tree.settings_file)["ScannerName"], PRODUCT)

    def test_the_window_comes_back_in_the_size_it_had(self):
        program = self.started()
        window = program.main_window()
        xdotool("windowsize", "--sync", program.window_number("frame"), 1200, 700)
        wait(lambda: window.box[2:] == (1200, 700), "the window has its new size")
        self.close(program)
        again = self.start()
        wait(lambda: again.main_window().box[2:] == (1200, 700), "the window has the size of the last time")


if __name__ == "__main__":
    unittest.main(verbosity=2)

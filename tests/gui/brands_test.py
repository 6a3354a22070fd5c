"""What each brand shows: names, menus, formats, languages, the About box."""
import datetime
import os

import session

session.enter()

import dataclasses  # noqa: E402
import unittest  # noqa: E402

from driver import wait  # noqa: E402
from window_support import WindowTest, read_plist, strings_of  # noqa: E402

PROGRAM = os.environ["PAPERLINE_BRANDS"]
JPEG, BMP = 1, 0


@dataclasses.dataclass(frozen=True)
class Brand:
    number: int
    name: str
    keys: str
    company: str
    default_format: int
    formats: int = 7
    languages: int = 27
    saves_on_command: bool = True


BRANDS = [
    Brand(0, "Paperline", "PL", "", JPEG),
    Brand(1, "Corvane Paperline", "CPL", "Corvane", JPEG),
    Brand(2, "Talmerick Sheetdesk", "Talmerick", "Talmerick", BMP, languages=11, saves_on_command=False),
    Brand(3, "Nimro Docklet", "Nimros", "Nimro", BMP, saves_on_command=False),
    Brand(4, "Lumo Docklet", "Lumo", "Lumo", BMP),
    Brand(5, "Vellum Desk", "HastellVellumDesk", "Hastell", JPEG, formats=8),
    Brand(6, "VellumRoam", "HastellVellumRoam", "Hastell", JPEG, formats=8),
    Brand(7, "Roaming Leaf GATHER", "HastellRoamingLeafGATHER", "Hastell", JPEG, formats=8),
    Brand(1000, "Corvane Paperline", "CPL", "Corvane", BMP),  # no row of the table
]
FORMATS = ["BMP", "JPG", "GIF", "PDF", "Multi-Page PDF", "TIF", "Multi-Page TIF", "PNG"]


class Brands(WindowTest):
    def test_every_brand_shows_its_own(self):
        os.link(PROGRAM, self.tree.bundle / "Contents/MACOS/brands")
        texts = strings_of(self.tree, "en")
        for brand in BRANDS:
            with self.subTest(brand.name, number=brand.number):
                self.tree.settings_file.unlink(missing_ok=True)
                program = self.start_brand(brand)
                try:
                    self.assertEqual(program.main_window().name, brand.name)
                    self.check_menus(program, brand, texts)
                    self.check_toolbar(program, brand)
                    self.check_about(program, brand, texts)
                    self.close(program)
                finally:
                    program.stop()  # a window that stays would be raised instead of the next brand's
                profile = read_plist(self.tree.settings_file)[self.home.profile_key()]
                self.assertEqual(profile["FileFormat"], brand.default_format)

    def start_brand(self, brand):
        return self.start(program=str(self.tree.bundle / "Contents/MACOS/brands"), words=[str(brand.number)])

    def check_menus(self, program, brand, texts):
        names = [c.name for c in program.main_window().walk() if c.role.endswith("menu item")]
        for kind in ("About", "Hide", "Quit"):
            self.assertIn(texts[kind + brand.keys], names)
        file_menu = names[names.index("File") + 1:names.index("Options")]
        self.assertEqual(file_menu, (["Save"] if brand.saves_on_command else []) + ["Setup", "Scan", "Quit"])
        languages = names[names.index("Language") + 1:names.index("Others")]
        self.assertEqual(len(languages), brand.languages)
        self.assertEqual(languages[0], "English")

    def check_toolbar(self, program, brand):
        window = program.main_window()
        combo = program.first(window.walk(), role="combo box")
        self.assertEqual([c.name for c in combo.walk() if c.role == "list item"], FORMATS[:brand.formats])
        self.assertEqual(combo.name, FORMATS[brand.default_format])
        switch = program.first(window.walk(), role="push button", name="Save", test=lambda c: c.showing)
        self.assertEqual(switch is not None, brand.saves_on_command)

    def check_about(self, program, brand, texts):
        program.menu(brand.name, texts["About" + brand.keys])
        box = wait(lambda: program.first(program.windows(), test=lambda w: w.role in ("alert", "dialog")),
                   "the About box shows")
        said = "\n".join(c.name for c in box.walk() if c.role == "label")
        company = f" {brand.company}" if brand.company else ""
        self.assertIn(f"{brand.name}\n1.0.0", said)
        self.assertIn(f"Copyright (c) {datetime.date.today().year}{company}. All rights reserved", said)
        role = box.role  # a closed box no longer tells it
        program.click(program.first(box.walk(), role="push button"))
        wait(lambda: not program.first(program.windows(), role=role), "the About box closes")


if __name__ == "__main__":
    unittest.main(verbosity=2)

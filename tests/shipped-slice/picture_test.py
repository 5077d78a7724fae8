"""Compares the window of the shipped slice with the native build's window, pixel by pixel."""

import pathlib
import subprocess
import unittest

import slices
import driver


def pictures(mac: driver.PracticeMac, name: str, program: pathlib.Path) -> tuple[pathlib.Path, pathlib.Path]:
    """Opens a program and returns two pictures of its window: after launch, and with Shift held."""
    driver.TOOL = program
    with mac.open_tool() as tool:
        launched = tool.picture(f"slice-{name}")
        with tool.shift_held():
            driver.eventually(lambda: tool.shows("Override Cleanup"), "the override button is shown")
            shifted = tool.picture(f"slice-{name}-shift")
        tool.press("Cancel")
        tool.ended()
    return launched, shifted


def differing_pixels(one: pathlib.Path, other: pathlib.Path) -> int:
    """Returns the number of pixels in which two pictures differ."""
    compared = subprocess.run(["compare", "-metric", "AE", one, other, "null:"], stderr=subprocess.PIPE, text=True)
    return int(float(compared.stderr))


class PictureTest(unittest.TestCase):
    def test_the_launched_window_is_the_native_builds(self) -> None:
        native, shipped = slices.NATIVE_BUILD / f"{slices.PRODUCT}.app" / slices.PRODUCT, driver.TOOL
        with driver.PracticeMac(locations="none", licence=False, agent=False, daemon=False) as mac:
            shipped_pictures = pictures(mac, slices.MACHINE, shipped)
            driver.INSPECTOR = slices.NATIVE_BUILD / "Inspector.bundle"
            native_pictures = pictures(mac, f"native-for-{slices.MACHINE}", native)
        differing = list(map(differing_pixels, native_pictures, shipped_pictures))
        print(f"Pixels in which the shipped slice's window ({slices.MACHINE}) differs from the native build's: "
              f"{differing[0]} as launched, {differing[1]} with Shift held.")
        self.assertEqual([0, 0], differing)
        self.assertGreater(differing_pixels(*shipped_pictures), 0, "a window that shows another button must differ")


if __name__ == "__main__":
    unittest.main()

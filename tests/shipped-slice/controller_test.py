"""Tests the parts of the shipped slice's controller that no journey reaches. See Questions.mm."""

import sys
import unittest

import slices

sys.path.insert(0, str(slices.ROOT / "tests/driver"))
import driver


class ControllerTest(unittest.TestCase):
    def test_every_question_is_answered(self) -> None:
        bundle = slices.BUILD / "tests/shipped-slice" / "Questions.bundle"
        with driver.PracticeMac(locations="none", licence=False, agent=False, daemon=False) as mac:
            mac.run(str(driver.TOOL), "-GSAppKitUserBundles", f'("{bundle}")')


if __name__ == "__main__":
    unittest.main()

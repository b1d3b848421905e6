import unittest

from mutants import LEAST, Draw, mutants_of, shares

FEW = "int f(int a) { return a < 1; }"
MANY = "int f(int a) { " + "if (a == 1) ++a; " * 30 + "return a; }"


class MutantsTest(unittest.TestCase):
    def setUp(self):
        files = {"src/few/A.cpp": FEW, "src/many/B.cpp": MANY, "src/many/C.cpp": MANY}
        self.candidates = [mutant for file, text in files.items() for mutant in mutants_of(file, text)]

    @staticmethod
    def drain(draw):
        drawn = []
        while True:
            mutant = draw.next(drawn[-1].file if drawn else None)
            if not mutant:
                return drawn
            drawn.append(mutant)

    def test_a_mutant_is_one_change(self):
        mutant = next(mutant for mutant in mutants_of("src/few/A.cpp", FEW) if mutant.place.operator == "boundary")
        self.assertEqual("int f(int a) { return a <= 1; }", mutant.apply(FEW))
        self.assertEqual(("few", 1, (1, 1)), (mutant.folder, mutant.line, mutant.function))

    def test_no_two_mutants_have_one_name(self):
        self.assertEqual(len(self.candidates), len({mutant.id for mutant in self.candidates}))

    def test_the_same_seed_draws_the_same(self):
        first, second, other = (self.drain(Draw(self.candidates, 20, seed)) for seed in (1, 1, 2))
        self.assertEqual(first, second)
        self.assertNotEqual(first, other)

    def test_every_folder_gets_a_few(self):
        self.assertEqual(LEAST, shares(self.candidates, 20)["few"])

    def test_mutants_of_one_file_come_one_after_the_other(self):
        files = [mutant.file for mutant in self.drain(Draw(self.candidates, 20, 1))]
        self.assertEqual(len(set(files)), 1 + sum(a != b for a, b in zip(files, files[1:])))

    def test_another_one_of_the_folder_comes_in_place_of_one_that_does_not_compile(self):
        draw = Draw(self.candidates, 20, 1)
        drawn = self.drain(draw)
        draw.replace(drawn[0])
        other = draw.next(None)
        self.assertEqual(drawn[0].folder, other.folder)
        self.assertNotIn(other, drawn)
        self.assertEqual(len(drawn), draw.count)


if __name__ == "__main__":
    unittest.main()

"""Tests of the type-description reader (typedesc.py) and the generator (ldpgen.py).

Run from the source root: PYTHONPATH=codegen python3 -m unittest discover -s tests/codegen
"""

import contextlib
import io
import os
import tempfile
import textwrap
import unittest

import ldpgen
import typedesc


def numbered(text, path="t.types"):
    return typedesc.number(typedesc.parse(textwrap.dedent(text), path))


def ids(decl):
    return {m.name: m.id for m in decl.members if m.kind not in ("method", "enumerator")}


def function_body(source, signature):
    """The text of the generated function whose definition starts with `signature`."""
    start = source.index(signature)
    return source[start:source.index("\n}\n", start)]


class ParseErrors(unittest.TestCase):
    """Every refusal names the description and the line."""

    CASES = [
        ("bad member", "entity E\n  attr a : U8\n  field f : U8\n",
         "t.types:3: 'field' is not a member of an entity"),
        ("bad member syntax", "value V\n  field f U8\n", "t.types:2: expected field NAME : TYPE"),
        ("member outside a declaration", "namespace N\n  attr a : U8\n",
         "t.types:2: member outside a declaration"),
        ("unknown declaration", "namespace N\n\nstruct S\n", "t.types:3: unknown declaration 'struct'"),
        ("duplicate attribute", "entity E\n  attr a : U8\n  const b : U8 = 1\n  map a : U8 [U8]\n",
         "t.types:4: E: a declared twice"),
        ("duplicate of an inherited attribute", "entity A\n  attr a : U8\nentity B : A\n  attr a : U8\n",
         "t.types:4: B: a declared twice"),
        ("unknown base", "entity A\n\nentity B : Nope\n", "t.types:3: B: unknown base entity Nope"),
        ("key of a derived named entity", "entity A\nentity B : A\n  key k : U8\n",
         "t.types:3: B: a named base entity cannot gain keys"),
        ("circular bases", "entity A : B\nentity B : A\n", "t.types:1: A: circular base A"),
        ("declared twice", "value V\nentity V\n", "t.types:2: V declared twice"),
        ("constant without a value", "entity E\n  const c : U8\n", "t.types:2: a constant needs a value"),
        ("function without a name", "entity E\n  function\n", "t.types:2: expected function NAME"),
        ("enumerator", "enum E\n  a = x\n", "t.types:2: not a number: x"),
    ]

    def test_refusals_name_file_and_line(self):
        for what, text, message in self.CASES:
            with self.subTest(what):
                with self.assertRaises(typedesc.DescError) as cm:
                    numbered(text)
                self.assertEqual(str(cm.exception), message)

    def test_an_imported_description_is_named_in_its_errors(self):
        with tempfile.TemporaryDirectory() as root:
            with open(os.path.join(root, "base.types"), "w") as f:
                f.write("namespace N\nentity A\n  attr a : U8\n  attr a : U8\n")
            with open(os.path.join(root, "top.types"), "w") as f:
                f.write('import "base.types"\nnamespace N\nentity B : A\n')
            with self.assertRaises(typedesc.DescError) as cm:
                ldpgen.load(root, "top.types")
            self.assertEqual(str(cm.exception), "base.types:4: A: a declared twice")


class Numbering(unittest.TestCase):
    UNIT = """
        namespace N
        enum Colour
          red = 1
        value V
          field x : U8
          const limit : U8 = 3
          field y : Colour = red_
          bit low : x limit
          method int extra() const;
        entity A
          key k : U32
          attr a : U8
          const c : U8 = 1
          method void helper();
          map m : U8 [U32]
          set s : U32
          function f
          children cs : Leaf [Zel::Name]
          child p : Leaf
        entity B : A
          attr b : U8
          function g
        entity C : B
          attr c2 : U8
        entity Leaf
          attr w : U8
        """

    def setUp(self):
        self.unit = numbered(self.UNIT)

    def test_entities_from_258_in_declaration_order(self):
        self.assertEqual(ids(self.unit.find("A")),
                         {"k": 258, "a": 259, "c": 260, "m": 261, "s": 262, "f": 263, "cs": 264,
                          "p": 265})
        self.assertEqual(ids(self.unit.find("Leaf")), {"w": 258})

    def test_each_level_of_derivation_adds_128(self):
        self.assertEqual(ids(self.unit.find("B")), {"b": 386, "g": 387})
        self.assertEqual(ids(self.unit.find("C")), {"c2": 514})
        self.assertEqual([self.unit.find(n).depth for n in "ABC"], [0, 1, 2])

    def test_value_fields_constants_and_bits_from_2(self):
        self.assertEqual(ids(self.unit.find("V")), {"x": 2, "limit": 3, "y": 4, "low": 5})


class GeneratedText(unittest.TestCase):
    """A few salient properties of the generated C++ (not its full text); what the
    generated code does is checked in C++ on tests/model/TestTypes.types."""

    @classmethod
    def setUpClass(cls):
        cls.unit = numbered(Numbering.UNIT)
        cls.header, cls.source = ldpgen.generate(cls.unit, "t/Unit")

    def test_nothing_of_the_entity_is_read_after_notifying(self):
        # A handler may drop the last reference to the entity while it is notified.
        for signature in ("Zel::Ptr<Leaf> A::pIs(", "Zel::Ptr<Leaf> A::csIs(", "bool A::csDel("):
            with self.subTest(signature):
                body = function_body(self.source, signature)
                tail = body[body.rindex("visitNotifiees"):].partition("\n")[2]
                self.assertNotRegex(tail, r"\b\w+_\b", tail)

    def test_hand_written_members_and_children_of_another_namespace(self):
        self.assertIn("  void helper();", self.header)
        _, source = ldpgen.generate(numbered("namespace M\nentity Leaf\n  key k : U8\n"
                                             "namespace N\nentity E\n  children cs : M::Leaf [U8]\n"),
                                    "t/U")
        self.assertIn("Zel::Ptr<M::Leaf> child = M::leafFactory(k);", source)


class Driver(unittest.TestCase):
    def test_writes_header_and_source_or_reports_the_error(self):
        with tempfile.TemporaryDirectory() as root:
            os.makedirs(os.path.join(root, "src", "d"))
            desc = os.path.join(root, "src", "d", "U.types")
            with open(desc, "w") as f:
                f.write("namespace N\nentity E\n  attr a : U8\n")
            out = os.path.join(root, "gen")
            self.assertEqual(ldpgen.main(["--source-root", os.path.join(root, "src"),
                                          "--out-root", out, "d/U.types"]), 0)
            with open(os.path.join(out, "d", "U.gen.cpp")) as f:
                self.assertIn('#include "d/U.gen.h"', f.read())
            self.assertTrue(os.path.exists(os.path.join(out, "d", "U.gen.h")))

            with open(desc, "a") as f:
                f.write("  attr a : U8\n")
            err = io.StringIO()
            with contextlib.redirect_stderr(err):
                status = ldpgen.main(["--source-root", os.path.join(root, "src"),
                                      "--out-root", out, "d/U.types"])
            self.assertEqual(status, 1)
            self.assertEqual(err.getvalue(), "ldpgen: d/U.types:4: E: a declared twice\n")


if __name__ == "__main__":
    unittest.main()

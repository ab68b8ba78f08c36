// What the headers that are compiled ahead of the tests belong to.

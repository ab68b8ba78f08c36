// What the headers that are compiled before the tests belong to.

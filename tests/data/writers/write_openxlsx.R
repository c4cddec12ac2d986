#!/usr/bin/Rscript
# SPDX-License-Identifier: GPL-3.0-or-later
# Writes the patients with openxlsx.
suppressPackageStartupMessages(library(openxlsx))

script <- sub("^--file=", "", grep("^--file=", commandArgs(FALSE), value = TRUE))
folder <- dirname(normalizePath(script))
book <- createWorkbook()
addWorksheet(book, "Patients")

# Formulas are written without a result, so their result is written; texts cannot be rich.
value <- function(kind, content) {
  switch(kind,
    number = , styled = as.numeric(content),
    boolean = content == "true",
    date = as.Date(content),
    error = NA_real_,
    formula = type.convert(sub(" .*", "", content), as.is = TRUE),
    rich = sub("|", "", content, fixed = TRUE),
    content)
}

lines <- readLines(file.path(folder, "patients.tsv"), encoding = "UTF-8")
for (row in seq_along(lines)) {
  fields <- strsplit(lines[row], "\t", fixed = TRUE)[[1]]
  for (column in seq_along(fields)) {
    field <- gsub("\\n", "\n", fields[column], fixed = TRUE)
    if (field == "") next
    kind <- sub(" .*", "", field)
    content <- substring(field, nchar(kind) + 2)
    writeData(book, "Patients", value(kind, content), startCol = column, startRow = row,
              colNames = FALSE, keepNA = TRUE)
    if (kind == "styled") {
      addStyle(book, "Patients", createStyle(numFmt = '0.00 "mmol/mol"'), row, column)
    }
  }
}
saveWorkbook(book, file.path(folder, "openxlsx.xlsx"), overwrite = TRUE)

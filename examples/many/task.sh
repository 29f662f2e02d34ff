#!/bin/sh
# One task of a job array: checks the deck that stands on the task's own line of a list.
task=${SLURM_ARRAY_TASK_ID:-${PBS_ARRAY_INDEX:-${1:-1}}}
deck=$(sed -n "${task}p" decks.txt)
exec deckman check "$deck" --json > "task-$task.jsonl"

# Runs one command-line case of zelct and compares what it does with what the case expects.
#
# A case folder holds:
#   cmd      the arguments, one line, quoted as in a shell; @OUT@ stands for a scratch file
#   stdout   the exact standard output
#   stderr   the exact standard error
#   exit     the exit code
#   written  (optional) the exact content the command must leave in @OUT@, with no other
#            file beside it (no temporary left behind)
#   stdin    (optional) what the command reads on standard input; without it, nothing
#   stdout-to (optional) a path, such as /dev/full, that standard output is written to
#            instead of being compared; `stdout` is then empty
#   setup    (optional) a shell script run first in an empty folder, with this folder of cases
#            as its argument, to make there what git cannot hold (a FIFO, a .git folder); the
#            command then runs in that folder
# When the arguments hold --json, standard output must also parse as JSON.
#
# Called with -DTOOL, -DEMULATOR ("|"-separated, may be empty), -DCASE_DIR, -DWORK_DIR and
# -DSCRATCH_DIR.
cmake_minimum_required(VERSION 3.19)

file(REMOVE_RECURSE "${SCRATCH_DIR}")
file(MAKE_DIRECTORY "${SCRATCH_DIR}")
set(scratch_file "${SCRATCH_DIR}/written.json")

file(READ "${CASE_DIR}/cmd" command_line)
string(STRIP "${command_line}" command_line)
string(REPLACE "@OUT@" "${scratch_file}" command_line "${command_line}")
separate_arguments(arguments UNIX_COMMAND "${command_line}")
string(REPLACE "|" ";" emulator "${EMULATOR}")

if(EXISTS "${CASE_DIR}/setup")
    set(tree "${SCRATCH_DIR}/tree")
    file(MAKE_DIRECTORY "${tree}")
    execute_process(COMMAND sh "${CASE_DIR}/setup" "${WORK_DIR}"
        WORKING_DIRECTORY "${tree}" RESULT_VARIABLE setup_exit)
    if(NOT setup_exit EQUAL 0)
        message(FATAL_ERROR "${CASE_DIR}/setup: exit ${setup_exit}")
    endif()
    set(WORK_DIR "${tree}")
endif()

set(input_file /dev/null)
if(EXISTS "${CASE_DIR}/stdin")
    set(input_file "${CASE_DIR}/stdin")
endif()
set(actual_stdout "")
if(EXISTS "${CASE_DIR}/stdout-to")
    file(READ "${CASE_DIR}/stdout-to" stdout_path)
    string(STRIP "${stdout_path}" stdout_path)
    execute_process(
        COMMAND ${emulator} "${TOOL}" ${arguments}
        WORKING_DIRECTORY "${WORK_DIR}"
        INPUT_FILE "${input_file}"
        OUTPUT_FILE "${stdout_path}"
        ERROR_VARIABLE actual_stderr
        RESULT_VARIABLE actual_exit)
else()
    execute_process(
        COMMAND ${emulator} "${TOOL}" ${arguments}
        WORKING_DIRECTORY "${WORK_DIR}"
        INPUT_FILE "${input_file}"
        OUTPUT_VARIABLE actual_stdout
        ERROR_VARIABLE actual_stderr
        RESULT_VARIABLE actual_exit)
endif()

set(failures "")

function(expect_same what expected actual)
    if(NOT "${expected}" STREQUAL "${actual}")
        file(WRITE "${SCRATCH_DIR}/expected.${what}" "${expected}")
        file(WRITE "${SCRATCH_DIR}/actual.${what}" "${actual}")
        execute_process(COMMAND diff -u "${SCRATCH_DIR}/expected.${what}"
                                        "${SCRATCH_DIR}/actual.${what}"
                        OUTPUT_VARIABLE difference)
        set(failures "${failures}\n--- ${what} differs:\n${difference}" PARENT_SCOPE)
    endif()
endfunction()

file(READ "${CASE_DIR}/stdout" expected_stdout)
file(READ "${CASE_DIR}/stderr" expected_stderr)
file(READ "${CASE_DIR}/exit" expected_exit)
string(STRIP "${expected_exit}" expected_exit)

expect_same(stdout "${expected_stdout}" "${actual_stdout}")
expect_same(stderr "${expected_stderr}" "${actual_stderr}")
expect_same(exit "${expected_exit}" "${actual_exit}")

if(EXISTS "${CASE_DIR}/written")
    file(READ "${CASE_DIR}/written" expected_written)
    set(actual_written "(no file written)")
    if(EXISTS "${scratch_file}")
        file(READ "${scratch_file}" actual_written)
    endif()
    expect_same(written "${expected_written}" "${actual_written}")
    file(GLOB leftovers "${SCRATCH_DIR}/written.json?*")
    if(leftovers)
        set(failures "${failures}\n--- files left beside the written one: ${leftovers}")
    endif()
endif()

if(command_line MATCHES "(^| )(--json|--format[ =]json)( |$)" AND NOT EXISTS "${CASE_DIR}/stdout-to")
    string(JSON json_type ERROR_VARIABLE json_error TYPE "${actual_stdout}")
    if(json_error)
        set(failures "${failures}\n--- standard output is not JSON: ${json_error}")
    endif()
endif()

if(failures)
    message(FATAL_ERROR "zelct ${command_line} (in ${WORK_DIR})${failures}")
endif()

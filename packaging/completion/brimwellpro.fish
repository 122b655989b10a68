# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of brimwellpro's options for fish.

function __brimwellpro_cameras
    if string match -rq '^(--simulate=)?(?<type>[^=-]+)=(?<path>.*)$' -- (commandline -ct)
        for entry in (__fish_complete_path $path)
            echo $type=$entry
        end
    else
        string join \n dx20 regular high ultra wireless
    end
end

complete -c brimwellpro -f
complete -c brimwellpro -l simulate -x -a '(__brimwellpro_cameras)' -d 'Attach a simulated camera (TYPE[=PATH])'
complete -c brimwellpro -l language -x -a 'en de es fr ja' -d 'Show all texts in that language'
complete -c brimwellpro -l technician -d 'Show the menu of the technician\'s tools'
complete -c brimwellpro -l import-settings -r -F -d 'Take over settings of the previous generation'
complete -c brimwellpro -l list-cameras -d 'Print the attached cameras and what they can do'
complete -c brimwellpro -l version -d 'Print the version'
complete -c brimwellpro -s h -l help -d 'Print the options'

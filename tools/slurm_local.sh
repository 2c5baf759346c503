#!/usr/bin/env bash
# A private Slurm cluster on this machine, for tests and measurements:
#
#   tools/slurm_local.sh start DIR [NODES]   prints SLURM_CONF=DIR/slurm.conf once it answers
#   tools/slurm_local.sh stop DIR            ends its daemons by their process ids
#
# Everything lives in DIR: a munge key, socket and pid file of its own, the
# controller's state and the nodes' spool folders, the logs. NODES (default 1)
# nodes of 8 CPUs are declared, all on localhost, each with its own slurmd.
set -euo pipefail
command="${1:?start or stop}"
dir="$(realpath -m "${2:?DIR}")"
nodes="${3:-1}"

freePort() {
  python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'
}

stopCluster() {
  for pidFile in "$dir"/slurmd-*.pid "$dir/slurmctld.pid" "$dir/munged.pid"; do
    [ -f "$pidFile" ] || continue
    pid="$(cat "$pidFile")"
    kill "$pid" 2>/dev/null || true
    for _ in $(seq 50); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
    kill -9 "$pid" 2>/dev/null || true
    rm -f "$pidFile"
  done
}

if [ "$command" = stop ]; then
  stopCluster
  exit 0
fi

mkdir -p "$dir/munge" "$dir/state" "$dir/log"
chmod 0755 "$dir/munge"
dd if=/dev/urandom of="$dir/munge/munge.key" bs=1024 count=1 status=none
chmod 0400 "$dir/munge/munge.key"
socket="$dir/munge/munge.socket"
munged --key-file="$dir/munge/munge.key" --socket="$socket" --pid-file="$dir/munged.pid" \
       --log-file="$dir/log/munged.log" --seed-file="$dir/munge/munge.seed" --force

user="$(id -un)"
{
  echo "ClusterName=qvrlocal"
  echo "SlurmctldHost=localhost"
  echo "SlurmctldPort=$(freePort)"
  echo "SlurmdPort=$(freePort)"
  echo "SlurmctldPidFile=$dir/slurmctld.pid"
  echo "SlurmctldLogFile=$dir/log/slurmctld.log"
  echo "SlurmdPidFile=$dir/slurmd-%n.pid"
  echo "SlurmdLogFile=$dir/log/slurmd-%n.log"
  echo "SlurmdSpoolDir=$dir/spool-%n"
  echo "StateSaveLocation=$dir/state"
  echo "SlurmUser=$user"
  echo "SlurmdUser=$user"
  echo "AuthType=auth/munge"
  echo "CredType=cred/munge"
  echo "AuthInfo=socket=$socket"
  echo "ProctrackType=proctrack/linuxproc"
  echo "TaskPlugin=task/none"
  echo "SelectType=select/cons_tres"
  echo "SelectTypeParameters=CR_CPU"
  echo "SchedulerParameters=batch_sched_delay=0,sched_min_interval=0,bf_interval=1"
  echo "SlurmdParameters=config_overrides"
  echo "ReturnToService=2"
  echo "MinJobAge=2"
  echo "JobCompType=jobcomp/none"
  echo "AccountingStorageType=accounting_storage/none"
  echo "MpiDefault=none"
  if [ "$nodes" -le 1 ]; then
    echo "NodeName=localhost CPUs=8 State=UNKNOWN"
    echo "PartitionName=main Nodes=localhost Default=YES MaxTime=INFINITE State=UP"
  else
    for n in $(seq "$nodes"); do
      echo "NodeName=n$n NodeHostname=localhost Port=$(freePort) CPUs=8 State=UNKNOWN"
    done
    echo "PartitionName=main Nodes=n[1-$nodes] Default=YES MaxTime=INFINITE State=UP"
  fi
} > "$dir/slurm.conf"

slurmctld -i -f "$dir/slurm.conf"
if [ "$nodes" -le 1 ]; then
  mkdir -p "$dir/spool-localhost"
  slurmd -N localhost -f "$dir/slurm.conf"
else
  for n in $(seq "$nodes"); do
    mkdir -p "$dir/spool-n$n"
    slurmd -N "n$n" -f "$dir/slurm.conf"
  done
fi
export SLURM_CONF="$dir/slurm.conf"
for _ in $(seq 100); do
  if [ "$(sinfo -h -o '%T' 2>/dev/null | grep -c -E '^idle')" -ge 1 ]; then
    echo "SLURM_CONF=$SLURM_CONF"
    exit 0
  fi
  sleep 0.1
done
echo "the local Slurm cluster did not come up; its logs end with:" >&2
tail -n 20 "$dir"/log/*.log >&2 || true
stopCluster
exit 1
